#!/usr/bin/env bash
# Runs the fuzz targets: scripts/fuzz.sh [SECONDS] [TARGET...]
#
# SECONDS for each target, 60 unless given; all targets unless some are named, as many at a time as there are cores. What
# a target learns is kept under build/fuzz/corpus and serves the next run; what ends it is kept under build/fuzz/findings.
# Exits with 1 on any finding. docs/fuzzing.md tells more.
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
jobs=$(nproc 2>/dev/null || echo 2)

scripts/install-deps.sh fuzz
mkdir -p build/fuzz/findings
[ -f build/fuzz/build.ninja ] || cmake --preset fuzz >build/fuzz/configure.log 2>&1 || { cat build/fuzz/configure.log >&2; exit 1; }
echo "== build (fuzz)"
if ! cmake --build build/fuzz -j "$jobs" --target "${targets[@]/#/fuzz_}" >build/fuzz/build.log 2>&1; then
  grep -E -A 12 'FAILED:|error:|ninja: ' build/fuzz/build.log | head -n 200
  echo "fuzz: the build failed; all of its output is in build/fuzz/build.log" >&2
  exit 1
fi
tail -n 1 build/fuzz/build.log

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1

# Bytes of an input: short ones run faster, and each target has all that it knows in so many.
longest() {
  case $1 in
    version_* | item_name) echo 128 ;;
    package_reader | pe_security) echo 8192 ;;
    *) echo 2048 ;;
  esac
}

# one row of the table; what was found follows it
run_target() {
  local target=$1 result=clean corpus=build/fuzz/corpus/$1 log=build/fuzz/$1.log
  mkdir -p "$corpus"
  build/fuzz/fuzz/fuzz_"$target" -max_total_time="$seconds" -max_len="$(longest "$target")" -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-" -dict="fuzz/$target.dict" \
    "$corpus" "fuzz/corpus/$target" >"$log" 2>&1 || result=FINDING
  stat() { sed -n "s/^stat::$1: *//p" "$log" | tail -n 1; }
  printf '%-20s %12s %10s %8s  %s\n' "$target" "$(stat number_of_executed_units)" "$(stat average_exec_per_sec)" \
    "$(find "$corpus" -type f | wc -l)" "$result"
  [ "$result" = clean ] && return 0
  grep -m 1 -E '^==[0-9]+==|: does not hold: |runtime error: ' "$log" || tail -n 3 "$log"
  local reproducer
  reproducer=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
  [ -z "$reproducer" ] || echo "  reproduce: build/fuzz/fuzz/fuzz_$target $reproducer"
  echo "  log: $log"
  return 1
}

echo "== fuzz, $seconds s each"
printf '%-20s %12s %10s %8s  %s\n' target executions per-second corpus result
status=0 running=0
for target in "${targets[@]}"; do
  if [ "$running" = "$jobs" ]; then
    wait -n || status=1
    running=$((running - 1))
  fi
  run_target "$target" &
  running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
  wait -n || status=1
  running=$((running - 1))
done
exit "$status"
