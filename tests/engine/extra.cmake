# Programs that link (or load) the shared library as a user's program would,
# so that the real attach and detach chains (DllMain, or the library's
# constructor and destructor) run in them. The engine tests start them and
# read what they leave behind.
tollan_probe(engine startup_probe)
target_link_libraries(startup_probe PRIVATE tollan)
tollan_probe(engine exit_probe)
target_link_libraries(exit_probe PRIVATE tollan Threads::Threads)
# The unload probe loads the library by name at run time, as a plug-in host does.
tollan_probe(engine unload_probe)
target_link_libraries(unload_probe PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
add_dependencies(unload_probe tollan)
