#!/bin/sh
# integers_only.sh COMPILER BINARY...: none of the binaries, compiled for a processor without floating point, calculates with
# it: that would be by functions of the compiler, which are linked in and a hundred times slower than integers.
set -eu
compiler=$1
shift
helpers='__((add|sub|mul|div|neg|eq|ne|lt|le|gt|ge|unord|pow)[sdt]f[0-9]?|extend[sd]f[dt]f2|trunc[dt]f[sd]f2|fix(uns)?[sdt]f[sdt]i|float(un)?[sdt]i[sdt]f)$'
calculates() { "${compiler%gcc}nm" "$1" | grep -E " $helpers"; }

work=$(mktemp -d)
echo 'double area(int a) { return a * 0.5; }' >"$work/area.c"
"$compiler" -msoft-float -c -o "$work/area.o" "$work/area.c"
calculates "$work/area.o" || { echo "floating point would not be noticed"; exit 1; }
rm -r "$work"

status=0
for binary in "$@"; do
  ! calculates "$binary" || { echo "$binary: calculates in floating point"; status=1; }
done
exit $status
