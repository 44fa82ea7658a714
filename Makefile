# The two commands that matter: `make demo` and `make check`. Each installs
# what a fresh Debian machine lacks (when run as root) before it builds.
JOBS ?= 2
CMAKE ?= cmake

.PHONY: all demo check check-linux check-windows check-fuzz sanitize asan tsan windows bench fuzz run-fuzzers format tidy clean deps-build deps-check deps-bench deps-fuzz

all: build/linux/build.ninja
	$(CMAKE) --build --preset linux -j $(JOBS)

deps-build:
	@scripts/install-deps.sh build
deps-check:
	@scripts/install-deps.sh check
deps-bench:
	@scripts/install-deps.sh bench
deps-fuzz:
	@scripts/install-deps.sh fuzz

build/%/build.ninja:
	$(CMAKE) --preset $*

CHECKED_FAULTS := off-by-one port strcpy use-after-free

# The instrument demo talks to a simulated instrument on a pseudo-terminal,
# then a checked program shows its faults reported and stopped at;
# DEVICE=/dev/ttyUSB0 (say) has it talk to a real one instead.
demo: deps-check
	$(CMAKE) --preset linux >/dev/null
	$(CMAKE) --build --preset linux -j $(JOBS) --target demo checked tollan-monitor
	build/linux/bin/demo $(if $(DEVICE),--device '$(DEVICE)')
	@echo; echo "A checked program's faults, each reported in an error file with its place:"
	@for fault in $(CHECKED_FAULTS); do build/linux/bin/checked --error-file - $$fault 2>/dev/null || true; done
	@echo; echo "The same faults under tollan-monitor, each stopping the program at its line:"
	@for fault in $(CHECKED_FAULTS); do build/linux/bin/tollan-monitor run -- build/linux/bin/checked $$fault; done

check: deps-check check-linux check-windows check-fuzz

check-linux:
	$(CMAKE) --preset linux >/dev/null
	$(CMAKE) --build --preset linux -j $(JOBS)
	ctest --preset linux
	scripts/check-named-objects

check-windows: windows
	ctest --preset windows

# A short fuzzing run: the seeds, and whatever earlier runs kept, then new inputs.
check-fuzz: FUZZ_SECONDS = 30
check-fuzz: run-fuzzers

windows: deps-check
	$(CMAKE) --preset windows >/dev/null
	$(CMAKE) --build --preset windows -j $(JOBS)

sanitize: asan tsan

asan: deps-check
	$(CMAKE) --preset asan >/dev/null
	$(CMAKE) --build --preset asan -j $(JOBS)
	ctest --preset asan
	scripts/check-named-objects

tsan: deps-check
	$(CMAKE) --preset tsan >/dev/null
	$(CMAKE) --build --preset tsan -j $(JOBS)
	ctest --preset tsan
	scripts/check-named-objects

# The fuzzers (clang, libFuzzer, AddressSanitizer and UBSan) for FUZZ_SECONDS;
# a crash, leak, hang or wrong result fails, and the input that did it is
# left in build/fuzz/artifacts/. Inputs that found something new are kept in
# build/fuzz/corpus/ for the next run.
FUZZ_SECONDS ?= 60
FUZZERS = xmodem_receive_fuzzer format_parser_fuzzer format_scan_fuzzer
SYMBOLIZER := $(shell readlink -f "$$(command -v llvm-symbolizer-16 || command -v llvm-symbolizer)" 2>/dev/null)

fuzz: deps-fuzz run-fuzzers

run-fuzzers:
	$(CMAKE) --preset fuzz >/dev/null
	$(CMAKE) --build --preset fuzz -j $(JOBS) --target $(FUZZERS)
	@mkdir -p build/fuzz/artifacts build/fuzz/tmp
	@set -e; for fuzzer in $(FUZZERS); do \
	  mkdir -p build/fuzz/corpus/$$fuzzer; \
	  echo "$$fuzzer: $(FUZZ_SECONDS) s"; \
	  TOLLAN_REGISTRY=$(CURDIR)/build/fuzz/registry.reg TMPDIR=$(CURDIR)/build/fuzz/tmp \
	  ASAN_OPTIONS=detect_leaks=1$(if $(SYMBOLIZER),:external_symbolizer_path=$(SYMBOLIZER)) \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  build/fuzz/bin/$$fuzzer -max_total_time=$(FUZZ_SECONDS) -timeout=5 -print_final_stats=1 \
	    -artifact_prefix=build/fuzz/artifacts/$$fuzzer- build/fuzz/corpus/$$fuzzer fuzz/corpus/$$fuzzer \
	    2> build/fuzz/$$fuzzer.log || { tail -n 40 build/fuzz/$$fuzzer.log; echo; \
	      grep -E "^$$fuzzer: |^==[0-9]+==ERROR|^SUMMARY|Test unit written" build/fuzz/$$fuzzer.log; \
	      echo "again: build/fuzz/bin/$$fuzzer <the input written above>"; exit 1; }; \
	  grep -E '^(Done|stat::(number_of_executed_units|average_exec_per_sec|new_units_added))' build/fuzz/$$fuzzer.log; \
	done
	scripts/check-named-objects

bench: deps-bench
	$(CMAKE) --preset bench >/dev/null
	$(CMAKE) --build --preset bench -j $(JOBS)
	bench/run-all build/bench/bin

format:
	git ls-files '*.c' '*.cpp' '*.h' | xargs clang-format -i

tidy: build/linux/build.ninja
	git ls-files 'src/*.cpp' | xargs clang-tidy -p build/linux --quiet

clean:
	rm -rf build
