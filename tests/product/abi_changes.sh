#!/bin/sh
# abi_changes.sh SOURCE-FOLDER COMPILER...: each way to break compiled programs is noticed, and told with what to do.
set -eu
source=$1 here=$(cd "$(dirname "$0")" && pwd)
shift
status=0

# noticed FILE SED-SCRIPT EXPECTED COMPILER...: after this edit the check fails and tells this line.
noticed() {
  file=$1 script=$2 expected=$3
  shift 3
  rm -rf /tmp/tree && mkdir -p /tmp/tree/cmake
  cp -r "$source/abi" "$source/include" /tmp/tree/
  cp "$source/cmake/fairlead.map" /tmp/tree/cmake/
  sed -i "$script" "/tmp/tree/$file"
  cmp -s "$source/$file" "/tmp/tree/$file" && { echo "nothing edited: $script"; status=1; }
  if "$here/abi.sh" /tmp/tree "$@" >/tmp/told 2>&1; then echo "not noticed: $script"; status=1; return; fi
  grep -qxF -e "$expected" /tmp/told && grep -q 'run tools/abi-update and commit' /tmp/told && return
  echo "told otherwise: $script" && cat /tmp/told && status=1
}

headers=include/fairlead
"$here/abi.sh" "$source" "$@"
noticed $headers/misc/network.h 's/uint32_t high;/uint64_t high;/' '+       0     8  high' "$@"
noticed $headers/state/glink.h 's/\*next, \*previous;/*previous, *next;/' '+       0     '"$(
  echo '__SIZEOF_POINTER__' | "$@" -E -P -x c -)"'  previous' "$@"
noticed $headers/misc/network.h 's/^} mac_t;/  int more;\n} mac_t;/' '+struct mac, 12 bytes' "$@"
noticed $headers/misc.h '$a typedef struct more { char text[3][5]; } more_t;' '+       0    15  text' "$@"
noticed $headers/uii.h 's/UII_SET = 3, UII_MERGE = 4/UII_MERGE = 3, UII_SET = 4/' '+UII_SET 4' "$@"
noticed $headers/talk/path.h 's/define SLASH_MAX 20/define SLASH_MAX 21/' '+SLASH_MAX 21' "$@"
noticed $headers/talk/node.h 's/^int VesselCount(/long VesselCount(/' \
  '+VesselCount@FAIRLEAD_1: long int VesselCount (vessel_t *);' "$@"
noticed $headers/adp/handle.h 's/(\*adp_get_t)(const char\* object/(*adp_get_t)(char* object/' \
  '+adp_get_t (callback): talk_t *adp_get_t (char *, slash_t *);' "$@"
noticed $headers/misc/encoders.h 's/md5_padding\[64\]/md5_padding[32]/' \
  '+md5_padding@FAIRLEAD_1: const unsigned char md5_padding[32];' "$@"
noticed cmake/fairlead.map '/^ *AxpGet;/d' '+AxpGet@(no node): const char *AxpGet (const axp_t *);' "$@"
noticed cmake/fairlead.map 's/^FAIRLEAD_1 /FAIRLEAD_2 /' '+AxpGet@FAIRLEAD_2: const char *AxpGet (const axp_t *);' "$@"
noticed cmake/fairlead.map 's/^ *AxpGet;/&\n    AxpMore;/' '+AxpMore@FAIRLEAD_1: (not declared)' "$@"

# Names of parameters, comments and order are nobody's business.
rm -rf /tmp/tree && mkdir -p /tmp/tree/cmake
cp -r "$source/abi" "$source/include" /tmp/tree/
tac "$source/cmake/fairlead.map" | sed -n 's/^ *[A-Za-z0-9_]*;$/&/p' >/tmp/names
{ echo 'FAIRLEAD_1 {'; echo '  global:'; cat /tmp/names; echo '  local:'; echo '    *;'; echo '};'; } >/tmp/tree/cmake/fairlead.map
sed -i 's/vessel_t\* vessel/vessel_t* object/; s|^int VesselCount|/* counts */ &|' /tmp/tree/$headers/talk/node.h
"$here/abi.sh" /tmp/tree "$@" || { echo "taken for a change"; status=1; }
exit $status
