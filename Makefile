# The two commands that matter: `make demo` and `make check`. Each installs
# what a fresh Debian machine lacks (when run as root) before it builds.
JOBS ?= 2
CMAKE ?= cmake

.PHONY: all demo check check-linux check-windows sanitize asan tsan windows bench format tidy clean deps-build deps-check deps-bench

all: build/linux/build.ninja
	$(CMAKE) --build --preset linux -j $(JOBS)

deps-build:
	@scripts/install-deps.sh build
deps-check:
	@scripts/install-deps.sh check
deps-bench:
	@scripts/install-deps.sh bench

build/%/build.ninja:
	$(CMAKE) --preset $*

# The instrument demo talks to a simulated instrument on a pseudo-terminal;
# DEVICE=/dev/ttyUSB0 (say) has it talk to a real one instead.
demo: deps-check
	$(CMAKE) --preset linux >/dev/null
	$(CMAKE) --build --preset linux -j $(JOBS) --target demo
	build/linux/bin/demo $(if $(DEVICE),--device '$(DEVICE)')

check: deps-check check-linux check-windows

check-linux:
	$(CMAKE) --preset linux >/dev/null
	$(CMAKE) --build --preset linux -j $(JOBS)
	ctest --preset linux
	scripts/check-named-objects

check-windows: windows
	ctest --preset windows

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
