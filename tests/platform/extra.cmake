# The library that the run-time loading tests load by its Windows name,
# "TollanProbe.dll" (libtollanprobe.so on POSIX), from beside the test program.
add_library(tollanprobe SHARED ${CMAKE_CURRENT_SOURCE_DIR}/platform/probe/probe_library.c)
if(WIN32)
  set_target_properties(tollanprobe PROPERTIES PREFIX "")
else()
  set_property(TARGET test_platform APPEND PROPERTY BUILD_RPATH $<TARGET_FILE_DIR:tollanprobe>)
endif()
add_dependencies(test_platform tollanprobe)
# Sanitizers intercept dlopen, which then searches as their own library would:
# the search path has to come from the environment too.
if(NOT WIN32)
  set_property(TEST platform APPEND PROPERTY ENVIRONMENT LD_LIBRARY_PATH=$<TARGET_FILE_DIR:tollanprobe>)
endif()
