#!/usr/bin/env bash
# Throughput of `qomath analyze --csv` over a large batch: writes N version 2.0
# spectral files of 401 points (380..780 nm, 1 nm) into a temporary folder,
# times one analyze run over the folder and prints files per second.
#
# usage: bench/batch_analyze.sh [QOMATH] [N]
#   QOMATH  the program (default: build/cli/qomath, then qomath on PATH)
#   N       number of files (default 10000)
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
prog=${1:-}
if [[ -z $prog ]]; then
    if [[ -x $here/build/cli/qomath ]]; then prog=$here/build/cli/qomath; else prog=$(command -v qomath); fi
fi
n=${2:-10000}

dir=$(mktemp -d "${TMPDIR:-/tmp}/qomath-batch.XXXXXX")
trap 'rm -rf "$dir"' EXIT

# Each file: a Gaussian emission line on a small warm continuum; the peak
# moves from file to file so that every spectrum differs.
awk -v n="$n" -v dir="$dir" 'BEGIN {
    for (f = 0; f < n; ++f) {
        name = sprintf("%s/s%05d.txt", dir, f)
        peak = 420 + (f * 37) % 300
        width = 10 + (f * 13) % 60
        printf "2.0 [Quarvel Optronic Spectral File]\n" > name
        printf "Synthetic line %d at %d nm\n", f, peak > name
        printf "Irradiance\n1\n%d [Averages]\n", 1 + f % 16 > name
        printf "380.00000000\n401\n780.00000000\n" > name
        for (i = 0; i <= 400; ++i) {
            wl = 380 + i
            d = (wl - peak) / width
            v = 0.05 + 0.001 * i + exp(-0.5 * d * d)
            printf "%f, %.8e\n", wl, v > name
        }
        close(name)
    }
}'

run() {  # LABEL ARGS...
    local label=$1; shift
    local start end
    start=$(date +%s.%N)
    "$prog" analyze "$@" "$dir" > /dev/null 2> "$dir.stages"
    end=$(date +%s.%N)
    awk -v n="$n" -v s="$start" -v e="$end" -v l="$label" 'BEGIN {
        t = e - s
        printf "%-34s %d files in %.3f s: %.0f files per second\n", l, n, t, n / t
    }'
    sed -n 's/^  /    /p' "$dir.stages"
    rm -f "$dir.stages"
}
trap 'rm -rf "$dir" "$dir.stages"' EXIT

# The yardstick first: reading and parsing alone, then the whole job on all
# cores and on one.
run "read and parse only (--check)" --check --stage-times
run "analyze --csv" --csv --stage-times
run "analyze --csv --jobs 1" --csv --jobs 1 --stage-times
