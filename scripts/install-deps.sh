#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks for building and testing
# Tollan. Usage: install-deps.sh [build|check|bench|fuzz]. Installs only what
# is missing, and only as root; otherwise it says what to install and goes on.
set -euo pipefail
need=(cmake ninja-build g++ pkg-config)
# The fuzzers: clang 16 and its libFuzzer (the system's clang 14 cannot compile
# std::source_location of the system's libstdc++).
fuzz=(clang-16 libclang-rt-16-dev)
case "${1:-build}" in
  check) need+=(libgtest-dev libgmock-dev googletest g++-mingw-w64-x86-64-posix wine64 socat lrzsz "${fuzz[@]}") ;;
  bench) need+=(libbenchmark-dev libspdlog-dev libfmt-dev) ;;
  fuzz) need+=("${fuzz[@]}") ;;
  build) ;;
esac
missing=()
for pkg in "${need[@]}"; do
  dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
done
[ ${#missing[@]} -eq 0 ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: please install: ${missing[*]}" >&2
  exit 0
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
