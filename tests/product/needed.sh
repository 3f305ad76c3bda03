#!/bin/sh
# needed.sh "sanitizers: NAMES" LIBRARY PROGRAM...: nothing but libc, the loader and (for programs) this library is needed at
# run time, and the library's soname is the promised one.
set -eu
[ "$1" = "sanitizers: " ] || { echo "skipped: a build with sanitizers needs their libraries"; exit 77; }
shift
library=$1 status=0
refuse() {
  echo "$1"
  status=1
}

readelf -d "$library" | grep -q 'SONAME.*\[libfairlead\.so\.1\]' || refuse "$library: another soname"
for file in "$@"; do
  needed=$(readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
  [ -n "$needed" ] || refuse "$file: needs nothing at all"
  for name in $needed; do
    case $name in
      libc.so* | ld-*) ;;
      libfairlead.so.1) [ "$file" != "$library" ] || refuse "$file: needs itself" ;;
      *) refuse "$file: needs $name" ;;
    esac
  done
done
exit $status
