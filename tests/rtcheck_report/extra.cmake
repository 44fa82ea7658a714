# The report probe links the shared library as a user's program does; the
# report tests start it for the reports that end the process.
tollan_probe(rtcheck_report report_probe)
target_link_libraries(report_probe PRIVATE tollan)
# The reports under a debugger run the probe under tollan-monitor (POSIX only).
if(TARGET tollan-monitor AND TARGET test_rtcheck_report)
  target_compile_definitions(test_rtcheck_report PRIVATE TOLLAN_MONITOR_PATH="$<TARGET_FILE:tollan-monitor>")
  add_dependencies(test_rtcheck_report tollan-monitor)
endif()
