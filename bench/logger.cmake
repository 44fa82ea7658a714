# spdlog's synchronous file sink is the yardstick for an enabled line.
find_package(spdlog REQUIRED)
target_link_libraries(bench_logger PRIVATE spdlog::spdlog)
