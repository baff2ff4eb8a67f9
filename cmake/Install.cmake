# What an installation holds: the library (component `library`), what takes to build with it
# (`development`), and the program (`program`).
include(CMakePackageConfigHelpers)

set(TRUNNION_PACKAGE_OF_library libtrunnion${PROJECT_VERSION_MAJOR})
set(TRUNNION_PACKAGE_OF_development libtrunnion-dev)
set(TRUNNION_PACKAGE_OF_program trunnion)

set(TRUNNION_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/trunnion)
file(RELATIVE_PATH TRUNNION_PREFIX_FROM_PC
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})

install(TARGETS trunnion EXPORT trunnion-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/trunnion)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/trunnion
  COMPONENT development FILES_MATCHING PATTERN *.h)

install(EXPORT trunnion-targets NAMESPACE trunnion:: DESTINATION ${TRUNNION_INSTALL_CMAKEDIR}
  COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/trunnion-config.cmake.in
  ${PROJECT_BINARY_DIR}/trunnion-config.cmake INSTALL_DESTINATION ${TRUNNION_INSTALL_CMAKEDIR})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/trunnion-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/trunnion-config.cmake
    ${PROJECT_BINARY_DIR}/trunnion-config-version.cmake
  DESTINATION ${TRUNNION_INSTALL_CMAKEDIR} COMPONENT development)

configure_file(${CMAKE_CURRENT_LIST_DIR}/trunnion.pc.in ${PROJECT_BINARY_DIR}/trunnion.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/trunnion.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET trunnion_program)
  # The library is found beside the program wherever the whole tree is moved to.
  file(RELATIVE_PATH libraries_from_programs
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(trunnion_program PROPERTIES
    INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
  install(TARGETS trunnion_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples ${PROJECT_SOURCE_DIR}/dialects
    DESTINATION ${CMAKE_INSTALL_DATADIR}/trunnion COMPONENT program)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/trunnion.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion.bash RENAME trunnion
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
endif()

# Each Debian package carries the licence under its own name.
foreach(component library development program)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${TRUNNION_PACKAGE_OF_${component}})
endforeach()
