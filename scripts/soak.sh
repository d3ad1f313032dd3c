#!/usr/bin/env bash
# Plays runs of a cluster under faults: scripts/soak.sh BUILD [RUNS] [FIRST-SEED]
#
# BUILD is a build directory with test_cluster in it. RUNS seeds are played, 500 unless given, from FIRST-SEED on, by
# chance unless given, as many at a time as there are cores; a single one shows all that happens in it. The whole log of
# each run that fails is kept under build/soak. Exits with 1 when one fails. docs/cluster-runs.md tells more.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

program=$1/tests/test_cluster
runs=${2:-500}
first=${3:-$((RANDOM * 32768 + RANDOM + 100000))}
for number in "$runs" "$first"; do
  [[ $number =~ ^[0-9]{1,12}$ ]] || { echo "soak: a number, not '$number'" >&2; exit 2; }
done
jobs=$(nproc 2>/dev/null || echo 2)
[ "$jobs" -le "$runs" ] || jobs=1

play() { # FIRST RUNS
  ORV_SEED=$1 ORV_RUNS=$2 "$program" --gtest_filter=ClusterSoak.PlaysTheSeedsOfTheEnvironment --gtest_brief=1
}

if [ "$runs" = 1 ]; then
  ORV_LOG=1 play "$first" 1
  exit
fi
mkdir -p build/soak
echo "== $runs runs from seed $first on"
workers=()
for ((job = 0; job < jobs; ++job)); do
  from=$((runs * job / jobs)) to=$((runs * (job + 1) / jobs))
  play $((first + from)) $((to - from)) >"build/soak/$job.log" 2>&1 &
  workers+=($!)
done
failed=0
for ((job = 0; job < jobs; ++job)); do
  wait "${workers[$job]}" || { failed=1; echo "not well: build/soak/$job.log"; }
  grep -E '^(VIOLATION:|again:)|: Failure$|ERROR: |WARNING: ' "build/soak/$job.log" || true
done
cat build/soak/*.log | sed -n 's/^\([0-9]*\) x \(.*\)$/\1 \2/p' | awk '{n = $1; $1 = ""; sum[$0] += n} END {for (w in sum) print sum[w] w}' |
  sort -k2
[ "$failed" = 0 ] && echo "every invariant held in all of them"
exit "$failed"
