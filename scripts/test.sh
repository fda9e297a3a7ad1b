#!/usr/bin/env bash
# Builds everything under AddressSanitizer + UndefinedBehaviorSanitizer, runs every
# test, runs the threaded tests under ThreadSanitizer, then runs each fuzz target for a
# bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh --with-office --with-browser --with-solver
jobs=$(nproc)

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DZP_SANITIZE=ON -DZP_WERROR=ON -DZP_BENCH=OFF >/dev/null
cmake --build build-asan -j"$jobs"
# A minimal Debian install has libzip without its command-line tools (zipcmp, zipmerge,
# ziptool), and libzip's own CMake package refuses to load without them: the build must find
# libzip through pkg-config only.
if grep -q '^libzip_DIR:PATH=/' build-asan/CMakeCache.txt; then
  echo "The build uses libzip's CMake package, which fails on a machine without the libzip tools." >&2
  exit 1
fi
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp"
# Every document a test writes is kept here for the package validator below.
documents="$PWD/build-asan/test-documents"
rm -rf "$documents" && mkdir -p "$documents"
export ZP_KEEP_DOCUMENTS="$documents"
(cd build-asan && ctest --output-on-failure -j"$jobs")
bash scripts/browser-test.sh build-asan
# The CalculiX examples solved by ccx and their reports, kept in out/calculix for a reader.
bash scripts/calculix-examples.sh build-asan out/calculix
cp out/calculix/*.docx "$documents"/
unset ZP_KEEP_DOCUMENTS

# Word's strictness: the built templates and every document the tests wrote, against the
# ISO/IEC 29500 schemas and the package rules Word enforces. No error and no warning passes.
validator="$(cd .. && pwd)/shared/ooxml/validate.sh"
if [[ -x "$validator" ]]; then
  mapfile -t packages < <(ls build-asan/templates/*.dotx build-asan/sample-writers/*.docx \
                              "$documents"/*.docx "$documents"/*.dotx 2>/dev/null)
  echo "== Package validator: ${#packages[@]} documents"
  log="$documents/validate.log"
  if ! "$validator" --strict "${packages[@]}" >"$log" 2>&1; then
    grep -E '^(ERROR|WARN)|: [0-9]+ error\(s\), [0-9]+ warning' "$log" | grep -v ': 0 error(s), 0 warning(s)' | head -60
    echo "The package validator found problems (whole log: $log)."
    exit 1
  fi
  echo "all clean"
else
  echo "== Package validator: skipped ($validator is not beside the checkout)"
fi

# The tests whose code runs on more than one thread (the progress box and the runs that cancel
# through it, the engine's save that writes the archive on a thread of its own, the study
# loader that looks at pictures on a few), under ThreadSanitizer.
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DZP_TSAN=ON -DZP_WERROR=ON -DZP_BENCH=OFF >/dev/null
cmake --build build-tsan -j"$jobs" --target test_progress test_docx test_host
echo "== ThreadSanitizer: test_progress, the engine's saves, the study loader's pictures"
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" build-tsan/test_progress --gtest_brief=1
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" build-tsan/test_docx --gtest_brief=1 \
  --gtest_filter='ZipWriter.*:PictureSave.*:SharedMarkup.*:Document*'
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" build-tsan/test_host --gtest_brief=1 \
  --gtest_filter='StudyLoaderTest.ManyPictures*'

# Fuzz targets: clang + libFuzzer, a short bounded run each.
if command -v clang++ >/dev/null; then
  cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DZP_FUZZ=ON -DZP_TESTS=OFF -DZP_BENCH=OFF >/dev/null
  targets=$(ls fuzz/*.cpp 2>/dev/null | xargs -r -n1 basename | sed 's/\.cpp$//; s/^/--target fuzz_/' | tr '\n' ' ')
  [[ -n "$targets" ]] && cmake --build build-fuzz -j"$jobs" $targets
  seconds=${ZP_FUZZ_SECONDS:-30}
  for f in build-fuzz/fuzz_*; do
    [[ -x "$f" ]] || continue
    name=$(basename "$f")
    corpus="fuzz/corpus/${name#fuzz_}"
    work=$(mktemp -d)
    [[ -d "$corpus" ]] && cp -r "$corpus"/. "$work"/
    echo "== $name (${seconds}s)"
    "$f" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=2048 "$work" 2>&1 | tail -n 3
    rm -rf "$work"
  done
fi
