#!/usr/bin/env bash
# Makes sure the Debian packages a make target needs are installed.
#   tools/ensure-deps.sh build|test|bench|fuzz
# Installs what is missing with apt-get when running as root; otherwise stops
# and names the exact packages to install.
set -euo pipefail

need=()
have_cmd() { command -v "$1" >/dev/null 2>&1; }
have_file() { [ -e "$1" ]; }

check_build() {
  have_cmd cmake || need+=(cmake)
  have_cmd make || need+=(make)
  have_cmd g++ || need+=(g++)
  have_cmd gcc || need+=(gcc)
  # The tests are part of every build.
  have_file /usr/include/gtest/gtest.h || need+=(libgtest-dev)
  have_cmd pkg-config || need+=(pkgconf)
}

for what in "$@"; do
  case "$what" in
    build|test) check_build ;;
    bench)
      check_build
      have_file /usr/include/benchmark/benchmark.h || need+=(libbenchmark-dev)
      have_file /usr/include/fftw3.h || need+=(libfftw3-dev)
      pkg-config --exists openblas 2>/dev/null || need+=(libopenblas-dev) ;;
    fuzz)
      check_build
      if ! have_cmd clang++; then
        need+=(clang libclang-rt-dev)
      elif ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
           clang++ -x c++ -fsanitize=fuzzer - -o /dev/null 2>/dev/null; then
        need+=(libclang-rt-dev)
      fi ;;
    *) echo "ensure-deps: unknown target '$what'" >&2; exit 2 ;;
  esac
done

[ ${#need[@]} -eq 0 ] && exit 0
# Drop duplicates, keep order.
mapfile -t need < <(printf '%s\n' "${need[@]}" | awk '!seen[$0]++')

if [ "$(id -u)" -eq 0 ] && have_cmd apt-get; then
  echo "Installing missing packages: ${need[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${need[@]}"
  exit 0
fi
echo "Missing Debian packages: ${need[*]}" >&2
echo "Install them with: sudo apt-get install ${need[*]}" >&2
exit 1
