# Debian packages of what Install.cmake lists, one a component; scripts/package makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME trunnion)
set(CPACK_PACKAGE_CONTACT "The Trunnion authors <trunnion@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Inverse kinematics of machine tools")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)

set(CPACK_COMPONENTS_ALL library development program)
if(TRUNNION_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(same_version "${TRUNNION_PACKAGE_OF_library} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${TRUNNION_PACKAGE_OF_library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "The shared library that a machining host links: where does the tool stand, and which joint values\nput it where the toolpath wants it?")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${TRUNNION_PACKAGE_OF_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_version}, libtnt-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, and what CMake and pkg-config need, to build a host with trunnion.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${TRUNNION_PACKAGE_OF_program})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${same_version}")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
  "The program that turns a machine file and a toolpath into joint values and G-code, with bundled\nsamples.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-trunnion)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "${same_version}, python3 (>= 3.11), python3 (<< 3.12), python3-numpy") # what Debian 12 has
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
  "The Python module: machines, streams, forward and inverse kinematics and the planner on arrays.")

include(CPack)
