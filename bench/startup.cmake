# Process start-up with the library against two baselines: a C program that
# links nothing, and a C++ program that loads only the C++ standard library
# (which the library itself needs).
add_executable(startup_plain_program ${CMAKE_CURRENT_SOURCE_DIR}/startup/plain_program.c)
add_executable(startup_cxx_program ${CMAKE_CURRENT_SOURCE_DIR}/startup/cxx_program.cpp)
add_executable(startup_linked_program ${CMAKE_CURRENT_SOURCE_DIR}/startup/linked_program.c)
target_link_libraries(startup_linked_program PRIVATE tollan)
add_dependencies(bench_startup startup_plain_program startup_cxx_program startup_linked_program)
target_compile_definitions(bench_startup PRIVATE
  PLAIN_PROGRAM="$<TARGET_FILE:startup_plain_program>"
  CXX_PROGRAM="$<TARGET_FILE:startup_cxx_program>"
  LINKED_PROGRAM="$<TARGET_FILE:startup_linked_program>")
