#!/bin/sh
# umbrella.sh COMPILER INCLUDE-FOLDER: fairlead/fairlead.h leads to every other public header.
set -eu
compiler=$1 include=$2
reached=$(printf '#include "fairlead/fairlead.h"\n' | "$compiler" -I "$include" -x c -M - | tr -s ' \\' '\n' |
  sed -n "s|^$include/||p" | sort -u)
all=$(cd "$include" && find . -name '*.h' | sed 's|^\./||' | sort)
[ "$reached" = "$all" ] && exit 0
echo "public headers that fairlead/fairlead.h does not include:"
printf '%s\n' "$reached" >/tmp/reached
printf '%s\n' "$all" | grep -Fvx -f /tmp/reached
exit 1
