#!/usr/bin/env bash
# One script for everything: ./build.sh VERB. Each verb works alone on a bare Debian 12 and does all
# of its own set-up.
#
#   demo       builds, then trains, validates and predicts on real data; results in out/demo
#   test       builds and passes the tests
#   sanitize   the tests under the address and undefined-behaviour sanitizers
#   threads    the tests of shared objects under the thread sanitizer
#   coverage   the share of lines and branches that the tests run, by area
#   fuzz       each fuzz target for a minute, or FUZZ_SECONDS
#   format     checks the formatting
#   lint       the layers, and cppcheck
#   tidy       clang-tidy, 20 minutes of a processor
#   symbols    compares what the libraries export with the lists in cmake/symbols
#   consumer   installs, then builds and runs a small project against the installed tree
#   package    makes the Debian packages, unpacks them and uses what they hold
#   docs       the API reference, in build/release/docs/html; checks the samples of README and docs
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

INSTRUMENTED=(clang libclang-rt-14-dev)
# RDKit is not instrumented, so the bounds that it leaves in containers mean nothing here.
export ASAN_OPTIONS=detect_container_overflow=0:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0

sanitize() {
  packages "${INSTRUMENTED[@]}"
  build sanitize
  run_tests sanitize
}

threads() {
  packages "${INSTRUMENTED[@]}"
  say "building (threads)"
  cmake --preset threads
  cmake --build --preset threads --parallel "$JOBS" --target threads_test
  say "testing (threads)"
  TSAN_OPTIONS=halt_on_error=1 build/threads/tests/threads_test
}

# What each line ran stands in build/coverage/lines.txt.
coverage() {
  packages "${INSTRUMENTED[@]}" llvm python3
  local out=$PWD/build/coverage program objects=()
  export LLVM_PROFILE_FILE=$out/profiles/%m.profraw
  build coverage
  say "testing (coverage)"
  rm -rf "$out/profiles"  # of test programs that were asked for their tests
  # A limit on the size of files would cut the profile off too.
  ctest --preset coverage --parallel "$JOBS" --exclude-regex AFileAtItsLimit
  say "coverage"
  llvm-profdata merge --sparse "$out"/profiles/*.profraw --output "$out/all.profdata"
  for program in "$out"/stats/libqvstats.so "$out"/platform/*/libqv*.so "$out"/tests/*_test; do
    objects+=(-object "$program")
  done
  objects=("$out/apps/qvstats" "${objects[@]}" -instr-profile "$out/all.profdata")
  llvm-cov show "${objects[@]}" -ignore-filename-regex /tests/ >"$out/lines.txt"
  llvm-cov export -summary-only "${objects[@]}" | tools/coverage_by_area.py
}

# The subcommands and options of the help texts, as a fuzzer's dictionary.
words_of_command_line() {
  local program=build/sanitize/apps/qvstats commands command
  commands=$($program --help | awk '/^Subcommands:/ { found = 1; next } found { print $1 }')
  for command in $commands; do
    echo "$command"
    $program "$command" --help | grep -oE -- '--[a-z-]+'
  done | sort -u | sed 's/.*/"&"/'
}

# Finds are kept in build/fuzz/<name>; an input that fails is written there and printed. Paths are
# absolute because a target may change its directory.
fuzz_one() {
  local name=$1 out=$PWD/build/fuzz/$1
  local limits=(-max_total_time="${FUZZ_SECONDS:-60}" -max_len=4096 -timeout=300 -rss_limit_mb=4096)
  mkdir -p "$out"
  [ "$name" != command ] || { words_of_command_line >"$out.dict" && limits+=(-dict="$out.dict"); }
  ASAN_OPTIONS=$ASAN_OPTIONS:malloc_context_size=10 TMPDIR=$PWD/build/fuzz build/sanitize/fuzz/"${name}_fuzz" "${limits[@]}" -print_final_stats=1 \
    -artifact_prefix="$out/" "$out" "$PWD/fuzz/corpus/$name" >"$out.log" 2>&1 ||
    { tail -60 "$out.log"; echo "fuzz: $name failed"; return 1; }
  echo "$name: $(grep -E '^Done|average_exec' "$out.log" | tr '\n' ' ')"
}

fuzz() {
  packages "${INSTRUMENTED[@]}"
  build sanitize
  say "fuzzing"
  export -f fuzz_one words_of_command_line
  printf '%s\n' fuzz/*_fuzz.cpp | sed 's#fuzz/##; s#_fuzz.cpp##' | xargs -P "$JOBS" -I{} bash -c 'fuzz_one {}'
}

format() {
  packages
  say "checking the formatting"
  git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror
  echo "every file is formatted"
}

lint() {
  packages cppcheck
  cmake --preset release  # for the list of compilations
  tools/check_layers.sh
  say "cppcheck"
  cppcheck --project=build/release/compile_commands.json --file-filter='platform/*' --file-filter='stats/*' \
    --file-filter='apps/*' --suppressions-list=.cppcheck --enable=warning,performance,portability --inline-suppr \
    --error-exitcode=1 --quiet -j "$JOBS"
  echo "nothing found"
}

tidy() {
  packages clang-tidy
  cmake --preset release  # for the list of compilations and the generated headers
  say "clang-tidy"
  git ls-files | grep -E '^(platform|stats|apps)/.*\.cpp$' |
    xargs -P "$JOBS" -n 4 clang-tidy --quiet -p build/release
  echo "nothing found"
}

# Strong symbols only: which templates a compiler emits beside them is its own affair.
symbols() {
  packages
  build release
  say "exported symbols"
  local library out=build/symbols
  mkdir -p "$out"
  for library in build/release/stats/libqvstats.so build/release/platform/*/libqv*.so; do
    nm -DC --defined-only "$library" | awk '$2 ~ /[TDBR]/ { $1 = $2 = ""; print substr($0, 3) }' | LC_ALL=C sort -u \
      >"$out/$(basename "$library" .so).txt"
  done
  diff -ru cmake/symbols "$out" || { echo "Meant so? cp $out/* cmake/symbols"; return 1; }
  echo "$(cat "$out"/*.txt | wc -l) symbols, as listed"
}

# use_installed PREFIX: a project outside of the tree builds with what is installed there, and the
# program runs.
use_installed() {
  local prefix=$1 flags
  rm -rf build/consumer
  say "a project that uses the CMake package"
  cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
  cmake --build build/consumer
  build/consumer/consumer
  say "the same through pkg-config"
  flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name qvstats.pc)") \
    pkg-config --cflags --libs --define-variable=prefix="$prefix" qvstats)
  # shellcheck disable=SC2086
  g++ examples/consumer/main.cpp $flags -Wl,-rpath,"$prefix/lib:$(dirname "$(find "$prefix" -name libqvstats.so)")" \
    -o build/consumer/consumer_pkgconfig
  build/consumer/consumer_pkgconfig
  say "the installed program"
  "$prefix/bin/qvstats" --version
}

consumer() {
  packages
  build release
  local prefix=$PWD/build/prefix
  rm -rf "$prefix"
  say "installing into build/prefix"
  cmake --install build/release --prefix "$prefix" >/dev/null
  use_installed "$prefix"
}

package() {
  packages dpkg-dev file
  build release
  local out=$PWD/build/packages deb
  rm -rf "$out"
  say "making the packages"
  cpack --config build/release/CPackConfig.cmake -B "$out"
  for deb in "$out"/*.deb; do
    dpkg-deb --info "$deb" | grep -E '^ (Package|Depends|Installed-Size)'
    dpkg-deb --extract "$deb" "$out/root"
  done
  apt-get install --simulate "$out"/*.deb >/dev/null
  use_installed "$out/root/usr"
}

docs() {
  packages doxygen graphviz python3
  build release
  cmake --build --preset release --target docs
  echo "build/release/docs/html/index.html"
  say "the samples and command lines of README and docs"
  tools/check_docs.py build/release
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
  demo | sanitize | threads | coverage | fuzz | format | lint | tidy | symbols | consumer | package | docs | bench) "$1" ;;
  test) tests ;;
  *)
    sed -n '2,21s/^# \{0,1\}//p' "$0"
    exit 1
    ;;
esac
