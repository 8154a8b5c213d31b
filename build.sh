#!/usr/bin/env bash
# One script for everything: ./build.sh VERB. Each verb works alone on a bare Debian 12 and does all
# of its own set-up.
#
#   demo       builds, then trains, validates and predicts on real data; results in out/demo
#   test       builds and passes the tests
#   sanitize   the tests under the address and undefined-behaviour sanitizers
#   format     checks the formatting
#   consumer   installs, then builds and runs a small project against the installed tree
#   docs       the API reference, in build/release/docs/html
#   bench      builds and runs the benchmarks
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(
  cmake ninja-build g++ pkg-config clang-format
  libeigen3-dev libboost-dev librdkit-dev rdkit-data libcairo2-dev zlib1g-dev libcli11-dev
  libgtest-dev libgmock-dev libbenchmark-dev fontconfig fonts-dejavu-core
)
JOBS=${JOBS:-$(nproc)}

say() { printf '\n== %s\n' "$*"; }

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

# Installs the Debian packages that are missing: those above and those named as arguments.
packages() {
  local missing=()
  local package
  for package in "${PACKAGES[@]}" "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "installing ${missing[*]}"
  as_root apt-get update -q
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

# build PRESET [cmake options]: configures and builds everything of a preset.
build() {
  local preset=$1
  shift
  say "building ($preset)"
  cmake --preset "$preset" "$@"
  cmake --build --preset "$preset" --parallel "$JOBS"
}

run_tests() {
  say "testing ($1)"
  ctest --preset "$1" --parallel "$JOBS"
}

demo() {
  packages
  build release -DQVSTATS_BUILD_TESTS=OFF -DQVSTATS_BUILD_BENCHMARKS=OFF
  examples/demo.sh build/release/apps/qvstats out/demo
}

tests() {
  packages
  build release -DQVSTATS_BUILD_TESTS=ON -DQVSTATS_BUILD_BENCHMARKS=ON
  run_tests release
}

sanitize() {
  packages
  build sanitize
  # RDKit is not instrumented, so the bounds that it leaves in containers mean nothing here.
  # fontconfig keeps a few patterns until the process ends.
  LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0 \
    ASAN_OPTIONS=detect_container_overflow=0:allocator_may_return_null=1 \
    UBSAN_OPTIONS=print_stacktrace=1 run_tests sanitize
}

format() {
  packages
  say "checking the formatting"
  git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror
  echo "every file is formatted"
}

consumer() {
  packages
  build release
  local prefix=$PWD/build/prefix
  rm -rf "$prefix" build/consumer
  say "installing into build/prefix"
  cmake --install build/release --prefix "$prefix" >/dev/null
  say "a project that uses the CMake package"
  cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
  cmake --build build/consumer
  build/consumer/consumer
  say "the same through pkg-config"
  local flags
  flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name qvstats.pc)") \
    pkg-config --cflags --libs --define-variable=prefix="$prefix" qvstats)
  # shellcheck disable=SC2086
  g++ examples/consumer/main.cpp $flags -Wl,-rpath,"$prefix/lib:$(dirname "$(find "$prefix" -name libqvstats.so)")" \
    -o build/consumer/consumer_pkgconfig
  build/consumer/consumer_pkgconfig
  say "the installed program"
  "$prefix/bin/qvstats" --version
}

docs() {
  packages doxygen graphviz
  cmake --preset release
  cmake --build --preset release --target docs
  echo "build/release/docs/html/index.html"
}

bench() {
  packages
  build release -DQVSTATS_BUILD_BENCHMARKS=ON
  local program
  for program in build/release/benchmarks/*_benchmark; do
    say "$(basename "$program")"
    "$program"
  done
}

case "${1:-}" in
  demo | sanitize | format | consumer | docs | bench) "$1" ;;
  test) tests ;;
  *)
    sed -n '2,12s/^# \{0,1\}//p' "$0"
    exit 1
    ;;
esac
