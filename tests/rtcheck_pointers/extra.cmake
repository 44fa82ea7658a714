# The pointer probe links the shared library as a user's program does; the
# tests start it for the dereference checks, whose reports end the process.
tollan_probe(rtcheck_pointers pointer_probe)
target_link_libraries(pointer_probe PRIVATE tollan)
