#!/usr/bin/env bash
# Runs every fuzz harness for a set time, seeded from examples/.
#   tools/run-fuzzers.sh BUILD_DIR/fuzz SECONDS
# Prints the executions each reached; exits non-zero when one finds a fault.
set -euo pipefail
dir=$1
seconds=${2:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
status=0
for fuzzer in "$dir"/fuzz_*; do
  [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  corpus="$dir/corpus/$name"
  mkdir -p "$corpus" "$dir/artifacts"
  cp -n "$root"/examples/*.txt "$corpus"/ 2>/dev/null || true
  log="$dir/$name.log"
  if "$fuzzer" "$corpus" -max_total_time="$seconds" -max_len=16384 -timeout=10 \
       -artifact_prefix="$dir/artifacts/$name-" -print_final_stats=1 >"$log" 2>&1; then
    runs=$(grep -m1 -oE 'stat::number_of_executed_units: *[0-9]+' "$log" | grep -oE '[0-9]+$' || echo '?')
    echo "$name: $runs executions in ${seconds} s, nothing found"
  else
    echo "$name: FAULT FOUND — see $log and $dir/artifacts/" >&2
    tail -n 40 "$log" >&2
    status=1
  fi
done
exit $status
