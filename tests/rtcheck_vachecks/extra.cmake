# The variadic probe links the shared library as a user's program does and
# writes the checking environment as compiled code would; the tests start it
# for the reports that end the process.
tollan_probe(rtcheck_vachecks vacheck_probe)
target_link_libraries(vacheck_probe PRIVATE tollan)
target_include_directories(vacheck_probe PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
