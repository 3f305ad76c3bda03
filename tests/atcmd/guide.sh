#!/bin/bash
# guide.sh SOURCE-FOLDER BUILD-FOLDER: the program in docs/modem.md is the file it names, and the session there gives what
# stands there.
set -u
export FAIRLEAD=$1 PATH=$2/tools:$2/examples:$PATH
guide=$FAIRLEAD/docs/modem.md status=0
block() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$guide" | grep -v '^```'; }

diff <(block c) "$FAIRLEAD/examples/ask_modem.c" || { echo "docs/modem.md shows another ask_modem.c"; status=1; }

block console >/tmp/expected
# In one shell: the modem stays in the background for the commands that follow.
while IFS= read -r line; do
  [[ $line == '$ '* ]] || continue
  printf '%s\n' "$line"
  eval "${line#'$ '}"
done </tmp/expected >/tmp/actual 2>&1
kill %1
diff /tmp/expected /tmp/actual || { echo "docs/modem.md shows another session"; status=1; }
grep -q '^\$ ' /tmp/expected || { echo "docs/modem.md shows no session"; status=1; }
exit $status
