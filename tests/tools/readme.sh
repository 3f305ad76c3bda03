#!/bin/bash
# readme.sh SOURCE-FOLDER BUILD-FOLDER COMPILER: the sessions in README.md run as they stand there and give what stands
# there, and the adapter in it is the file it names. "cc" is the compiler of this build: the adapter must fit the tool.
set -u
FAIRLEAD=$1 build=$2
mkdir /tmp/bin
printf '#!/bin/sh\nexec %s "$@"\n' "$3" >/tmp/bin/cc
chmod +x /tmp/bin/cc
export FAIRLEAD PATH=/tmp/bin:$build/tools:$build/examples:$PATH
status=0

blocks() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$FAIRLEAD/README.md" | grep -v '^```'; }

diff <(blocks c) "$FAIRLEAD/examples/hall/lamp.c" || { echo "README.md shows another lamp.c"; status=1; }

"$FAIRLEAD/examples/lay-out" "$build" || exit 1
session=$(blocks console)
printf '%s\n' "$session" >/tmp/expected
while IFS= read -r line; do
  [[ $line == '$ '* ]] || continue
  printf '%s\n' "$line"
  bash -c "${line#'$ '}" 2>&1
done <<<"$session" >/tmp/actual
commands=$(grep -c '^\$ ' /tmp/expected)
diff /tmp/expected /tmp/actual || { echo "README.md shows another session"; status=1; }
echo "$commands commands"
[ "$commands" -gt 0 ] || status=1
exit $status
