# The tool's tests run the tollan-xmodem of the build on pseudo-terminals
# (POSIX only).
if(TARGET test_xmodem_tool)
  target_compile_definitions(test_xmodem_tool PRIVATE TOLLAN_XMODEM_TOOL="$<TARGET_FILE:tollan-xmodem>")
  add_dependencies(test_xmodem_tool tollan-xmodem)
endif()
