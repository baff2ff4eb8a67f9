# The page of reports, built by the front-end package in report/ and kept in the program.
#
# Sets TRUNNION_REPORT_PAGE_SOURCES: what a program is linked with that has the page, or has none.

set(TRUNNION_REPORT_PAGE_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/app/NoPage.cpp)

# trunnion_find_node(): sets TRUNNION_NPM, or TRUNNION_NO_REPORTS to the reason why there is none.
function(trunnion_find_node)
  set(least 18)
  find_program(TRUNNION_NODE NAMES node nodejs)
  find_program(TRUNNION_NPM npm)
  if(NOT TRUNNION_NODE OR NOT TRUNNION_NPM)
    set(TRUNNION_NO_REPORTS "Node.js and npm are not installed" PARENT_SCOPE)
    return()
  endif()
  execute_process(COMMAND ${TRUNNION_NODE} --version
    OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
  string(REGEX REPLACE "^v" "" version "${version}")
  if(version VERSION_LESS least)
    set(TRUNNION_NO_REPORTS "Node.js ${version} is older than ${least}" PARENT_SCOPE)
  endif()
endfunction()

if(NOT TRUNNION_REPORTS)
  set(TRUNNION_NO_REPORTS "switched off")
else()
  trunnion_find_node()
endif()

if(TRUNNION_NO_REPORTS)
  message(STATUS "The program is built without reports: ${TRUNNION_NO_REPORTS}")
  return()
endif()

set(page ${CMAKE_CURRENT_BINARY_DIR}/report/report.html)
set(folder ${PROJECT_SOURCE_DIR}/report)
file(GLOB_RECURSE inputs CONFIGURE_DEPENDS ${folder}/src/*)
add_custom_command(OUTPUT ${page}
  COMMAND ${CMAKE_COMMAND} -D folder=${folder} -D npm=${TRUNNION_NPM} -D page=${page}
    -P ${PROJECT_SOURCE_DIR}/cmake/BuildReportPage.cmake
  DEPENDS ${inputs} ${folder}/package.json ${folder}/package-lock.json ${folder}/tsconfig.json
    ${folder}/tools/build.mjs ${PROJECT_SOURCE_DIR}/cmake/BuildReportPage.cmake
  COMMENT "Building the page of reports"
  VERBATIM)

# The assembler takes the file as it is, at once; a compiler would take seconds for an array of it.
enable_language(ASM)
set(TRUNNION_REPORT_PAGE ${page})
configure_file(app/ReportPage.S.in ${CMAKE_CURRENT_BINARY_DIR}/ReportPage.S @ONLY)
set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/ReportPage.S PROPERTIES
  OBJECT_DEPENDS ${page})
add_library(trunnion_report_page OBJECT ${CMAKE_CURRENT_BINARY_DIR}/ReportPage.S)
set(TRUNNION_REPORT_PAGE_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/app/BundledPage.cpp $<TARGET_OBJECTS:trunnion_report_page>)
