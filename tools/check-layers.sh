#!/usr/bin/env bash
# Fails when a file includes a header of a higher layer.
#   tools/check-layers.sh [SOURCE_DIR]
#
# The layers, bottom to top; a file may include its own layer and the ones
# below it. Layers of the same rank (straylight, detector, retro) do not
# include each other.
#   0 common       status codes, barrier, wavelength grid, text and number helpers
#   1 numerics     interpolation, arrays, arithmetic between spectra, fits, linear algebra, peaks
#   2 colorimetry  CIE tables and everything colour or photometric
#   3 files        file formats
#   4 straylight, detector, retro
#   5 cli, python  the program and the bindings
# Files are placed by their folder under src/; public headers by the table
# below, which must name every header in include/qomath.
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root"

declare -A rank=([common]=0 [numerics]=1 [colorimetry]=2 [files]=3
                 [straylight]=4 [detector]=4 [retro]=4 [cli]=5 [python]=5)

# Public header -> layer.
declare -A header=(
  [common.h]=common [grid.h]=common
  [interpolation.h]=numerics [arrays.h]=numerics [spectral_arith.h]=numerics
  [polyfit.h]=numerics [linalg.h]=numerics [peaks.h]=numerics
  [filters.h]=numerics [fft.h]=numerics [conversions.h]=numerics
  [cie_tables.h]=colorimetry [tristimulus.h]=colorimetry [chromaticity.h]=colorimetry
  [cct.h]=colorimetry [dominant.h]=colorimetry [cri.h]=colorimetry
  [photometry.h]=colorimetry [summary.h]=colorimetry [calc.h]=colorimetry
  [colour_quality.h]=colorimetry
  [units.h]=files [spectral_file.h]=files [qofile.h]=files
  [spectral_analysis.h]=files [registry.h]=files [marshal.h]=files
  [straylight.h]=straylight [lines.h]=straylight [command.h]=straylight
  [nvis.h]=colorimetry
  [detector.h]=detector [donaldson.h]=detector
  [retro.h]=retro
  [qomath.h]=cli
)

fail=0
say() { echo "$*" >&2; fail=1; }

for h in include/qomath/*.h; do
  [ -n "${header[$(basename "$h")]:-}" ] || say "$h: public header not placed in a layer (add it to tools/check-layers.sh)"
done

# layer_of INCLUDE -> layer name, or nothing for includes outside the layers.
layer_of() {
  case "$1" in
    qomath/*) echo "${header[${1#qomath/}]:-}" ;;
    qomath_data/*) ;;  # compiled-in tables: data, not code
    */*) local top=${1%%/*}; [ -n "${rank[$top]:-}" ] && echo "$top" ;;
  esac
}

check_file() {  # FILE LAYER
  local file=$1 own=$2 line inc target
  while IFS=: read -r line inc; do
    target=$(layer_of "$inc")
    [ -n "$target" ] || continue
    [ "$target" = "$own" ] && continue
    if [ "${rank[$target]}" -gt "${rank[$own]}" ]; then
      say "$file:$line: includes \"$inc\" ($target) from the lower layer $own"
    elif [ "${rank[$target]}" -eq "${rank[$own]}" ]; then
      say "$file:$line: includes \"$inc\" ($target) from its sibling layer $own"
    fi
  done < <(grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$file" |
           sed -E 's/^([0-9]+):[^"]*"([^"]+)".*/\1:\2/')
}

while IFS= read -r -d '' f; do
  layer=${f#src/}; layer=${layer%%/*}
  if [ -z "${rank[$layer]:-}" ]; then say "$f: folder src/$layer is not a layer"; continue; fi
  check_file "$f" "$layer"
done < <(find src -type f \( -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.inc' \) -print0)

for h in include/qomath/*.h; do
  own=${header[$(basename "$h")]:-}
  [ -n "$own" ] && check_file "$h" "$own"
done

[ "$fail" -eq 0 ] && echo "layers: every include points to the same or a lower layer"
exit "$fail"
