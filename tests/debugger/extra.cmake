# The two-copies probe loads the shared library twice, under two names.
tollan_probe(debugger two_copies_probe)
target_link_libraries(two_copies_probe PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
add_dependencies(two_copies_probe tollan)
