#!/bin/sh
# exports.sh LIBRARY VERSION-SCRIPT INCLUDE-FOLDER: the library exports the names that its version script lists, and
# those are the ones its headers declare.
set -eu
export LC_ALL=C
library=$1 map=$2 include=$3
cd /tmp

nm -D --defined-only "$library" | sed 's/.* //; s/@.*//' | grep -vx 'FAIRLEAD_[0-9.]*' | sort -u >exported
sed -n '/global:/,/local:/s/^ *\([A-Za-z0-9_]*\);$/\1/p' "$map" | sort -u >listed
# gcc tells each declared function with the file it stands in; a variable is declared with "extern".
printf '#include "fairlead/fairlead.h"\n' >all.c
gcc -I "$include" -fsyntax-only -aux-info declarations all.c
grep "^/\* $include/fairlead" declarations | sed 's/^[^*]*\*[^*]*\*\/ //; s/ (.*//; s/.*[ *]//' >functions
grep -rhoE '^extern [^(]*;' "$include" | sed 's/[][0-9]*;//; s/.*[ *]//' >variables
sort -u functions variables >declared

status=0
for file in exported listed declared; do
  [ -s $file ] || { echo "no names found: $file"; status=1; }
done
differ() {
  comm -23 "$1" "$2" >difference
  [ -s difference ] || return 0
  echo "$1, but not $2:"
  cat difference
  status=1
}
differ exported listed
differ listed exported
differ listed declared
differ declared listed
exit $status
