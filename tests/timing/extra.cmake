# The external timing engine that the timer-engine tests load at run time by
# its Windows name "qwuste.dll" (libqwuste.so on POSIX), from beside the test
# program.
add_library(qwuste SHARED ${CMAKE_CURRENT_LIST_DIR}/qwuste_engine/qwuste_engine.cpp)
target_include_directories(qwuste PRIVATE ${PROJECT_SOURCE_DIR}/src)
tollan_warnings(qwuste)
set_target_properties(qwuste PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin
                                        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
if(WIN32)
  set_target_properties(qwuste PROPERTIES PREFIX "")
  target_link_options(qwuste PRIVATE -static)
else()
  # The run path serves a plain build; under a sanitizer dlopen is called from
  # the sanitizer's run-time, whose own search path does not have the bin dir.
  set_property(TARGET test_timing APPEND PROPERTY BUILD_RPATH $<TARGET_FILE_DIR:qwuste>)
  set_property(TEST timing APPEND PROPERTY ENVIRONMENT LD_LIBRARY_PATH=$<TARGET_FILE_DIR:qwuste>)
endif()
add_dependencies(test_timing qwuste)
