# The monitor's tests run tollan-monitor (POSIX only) with the probes beside
# the test program, and link the monitor's parts for the tests of its
# readers.
if(TARGET test_monitor)
  target_link_libraries(test_monitor PRIVATE tollan_monitor_parts)
  target_compile_definitions(test_monitor PRIVATE TOLLAN_MONITOR_PATH="$<TARGET_FILE:tollan-monitor>")
  add_dependencies(test_monitor tollan-monitor)
  tollan_probe(monitor monitor_probe)
  target_link_libraries(monitor_probe PRIVATE tollan)
  # The standard I/O probe calls the pipe's writer, which the shared library
  # does not export: it links the library's objects and entry instead.
  tollan_probe(monitor standard_io_probe)
  target_sources(standard_io_probe PRIVATE ${TOLLAN_ENTRY_SOURCE})
  target_link_libraries(standard_io_probe PRIVATE tollan_core)
  # The attach probe connects late, as a program calling its debugger in
  # does, through the library's own step (not exported): likewise.
  tollan_probe(monitor attach_probe)
  target_sources(attach_probe PRIVATE ${TOLLAN_ENTRY_SOURCE})
  target_link_libraries(attach_probe PRIVATE tollan_core)
  # Resource tracking's exported functions are needed by this probe and its test.
  if(TOLLAN_MONITOR_RESOURCE_PROBE)
    tollan_probe(monitor resource_probe)
    target_link_libraries(resource_probe PRIVATE tollan)
    target_compile_definitions(test_monitor PRIVATE TOLLAN_MONITOR_RESOURCE_PROBE=1)
  endif()
endif()
