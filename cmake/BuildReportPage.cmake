# cmake -D folder=REPORT -D npm=NPM -D page=FILE -P BuildReportPage.cmake
#
# Builds the page of reports to FILE. Several build trees share the packages that npm installs next
# to the page's sources: they wait for one another.
file(LOCK ${folder}/.build.lock TIMEOUT 600)

# run(WHAT COMMAND...)
function(run what)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${folder}
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${output}\n${what} failed; see above. Without the page of reports the "
      "program is built with -DTRUNNION_REPORTS=OFF.")
  endif()
endfunction()

# npm writes this file last.
if(${folder}/package-lock.json IS_NEWER_THAN ${folder}/node_modules/.package-lock.json)
  run("Installing the packages that report/package-lock.json names"
    ${npm} ci --no-audit --no-fund --prefer-offline --loglevel=error)
endif()
run("Building the page of reports" ${npm} run --silent build -- --outfile=${page})
