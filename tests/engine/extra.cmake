# Programs that link (or load) the shared library as a user's program would,
# so that the real attach and detach chains (DllMain, or the library's
# constructor and destructor) run in them. The engine tests start them and
# read what they leave behind.
function(tollan_engine_probe name)
  add_executable(${name} ${CMAKE_CURRENT_SOURCE_DIR}/engine/probe/${name}.cpp)
  tollan_warnings(${name})
  tollan_sanitize(${name})
  if(CMAKE_CROSSCOMPILING)
    target_link_options(${name} PRIVATE -static)
  endif()
  if(TARGET test_engine)
    add_dependencies(test_engine ${name})
  endif()
endfunction()

tollan_engine_probe(startup_probe)
target_link_libraries(startup_probe PRIVATE tollan)
tollan_engine_probe(exit_probe)
target_link_libraries(exit_probe PRIVATE tollan Threads::Threads)
# The unload probe loads the library by name at run time, as a plug-in host does.
tollan_engine_probe(unload_probe)
target_link_libraries(unload_probe PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
add_dependencies(unload_probe tollan)

if(TARGET test_engine)
  if(WIN32)
    set(library_name "$<TARGET_FILE_NAME:tollan>")
  else()
    set(library_name "$<TARGET_FILE:tollan>")
  endif()
  target_compile_definitions(test_engine PRIVATE TOLLAN_LIBRARY_FOR_PROBES="${library_name}")
endif()
