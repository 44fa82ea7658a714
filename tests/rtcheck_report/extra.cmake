# The report probe links the shared library as a user's program does; the
# report tests start it for the reports that end the process.
tollan_probe(rtcheck_report report_probe)
target_link_libraries(report_probe PRIVATE tollan)
