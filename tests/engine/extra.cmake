# The start-up trace test runs a program that links the shared library, so
# that the real attach and detach chains (DllMain, or the library's
# constructor and destructor) write the log it checks.
add_executable(engine_startup_probe ${CMAKE_CURRENT_SOURCE_DIR}/engine/probe/startup_probe.cpp)
target_link_libraries(engine_startup_probe PRIVATE tollan)
tollan_warnings(engine_startup_probe)
tollan_sanitize(engine_startup_probe)
if(CMAKE_CROSSCOMPILING)
  target_link_options(engine_startup_probe PRIVATE -static)
endif()
if(TARGET test_engine)
  add_dependencies(test_engine engine_startup_probe)
  target_compile_definitions(test_engine PRIVATE
    TOLLAN_STARTUP_PROBE_NAME="$<TARGET_FILE_NAME:engine_startup_probe>")
endif()
