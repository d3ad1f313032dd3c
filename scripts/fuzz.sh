#!/usr/bin/env bash
# Runs the fuzz targets: scripts/fuzz.sh [SECONDS] [TARGET...]
#
# SECONDS for each target, 60 unless given; all targets unless some are named. What a target learns is kept under
# build/fuzz/corpus and serves the next run; what ends it is kept under build/fuzz/findings. Exits with 1 on any finding.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=60
case ${1:-} in [0-9]*) seconds=$1; shift ;; esac
[[ $seconds =~ ^[1-9][0-9]*$ ]] || { echo "fuzz: a number of seconds, not '$seconds'" >&2; exit 2; }
targets=("$@")
[ $# -gt 0 ] || for source in fuzz/*.cpp; do targets+=("$(basename "$source" .cpp)"); done
for target in "${targets[@]}"; do
  [ -f "fuzz/$target.cpp" ] || { echo "fuzz: no target '$target' in fuzz/" >&2; exit 2; }
done

scripts/install-deps.sh fuzz
mkdir -p build/fuzz/findings
[ -f build/fuzz/build.ninja ] || cmake --preset fuzz >build/fuzz/configure.log 2>&1 || { cat build/fuzz/configure.log >&2; exit 1; }
echo "== build (fuzz)"
cmake --build build/fuzz -j "$(nproc)" --target "${targets[@]/#/fuzz_}" | tail -n 1

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1

echo "== fuzz, $seconds s each"
printf '%-20s %12s %10s %8s  %s\n' target executions per-second corpus result
status=0
for target in "${targets[@]}"; do
  corpus=build/fuzz/corpus/$target
  log=build/fuzz/$target.log
  mkdir -p "$corpus"
  options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-")
  [ -f "fuzz/$target.dict" ] && options+=(-dict="fuzz/$target.dict")
  result=clean
  build/fuzz/fuzz/fuzz_"$target" "${options[@]}" "$corpus" "fuzz/corpus/$target" >"$log" 2>&1 || result=FINDING
  stat() { sed -n "s/^stat::$1: *//p" "$log" | tail -n 1; }
  printf '%-20s %12s %10s %8s  %s\n' "$target" "$(stat number_of_executed_units)" "$(stat average_exec_per_sec)" \
    "$(find "$corpus" -type f | wc -l)" "$result"
  if [ "$result" != clean ]; then
    status=1
    grep -m 1 -E '^==[0-9]+==|: does not hold: |runtime error: ' "$log" || tail -n 3 "$log"
    reproducer=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
    [ -z "$reproducer" ] || echo "  reproduce: build/fuzz/fuzz/fuzz_$target $reproducer"
    echo "  log: $log"
  fi
done
exit "$status"
