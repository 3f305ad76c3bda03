#!/bin/bash
# man.sh SOURCE-FOLDER TOOLS-FOLDER: each man page names every command and option that the tool's help names, and no other.
set -u
source=$1 tools=$2 status=0

page() { sed -e 's/\\f[BIR]//g' -e 's/\\-/-/g' "$source/docs/man/$1.1"; }

# The lines below .TP: what an entry is about.
entries() { page "$1" | awk 'entry { print; entry = 0 } /^\.TP/ { entry = 1 }'; }

compare() {  # compare WHAT FROM-THE-HELP FROM-THE-PAGE
  [ -n "$2" ] || { echo "$1: nothing in the help"; status=1; }
  diff <(sort <<<"$2") <(sort <<<"$3") || { echo "$1: the help (<) and the page (>) differ"; status=1; }
}

commands=$("$tools/fairlead" --commands | sed -E 's/ --[a-z]+//g; s/ - / /; s/ +$//')
compare "fairlead's commands" "$commands" "$(entries fairlead | grep -E '^[a-z]')"
compare "fairlead's options" "$("$tools/fairlead" --help | grep -oE '^  --[a-z]*( [A-Z]+)?' | sed 's/^  //')" \
  "$(entries fairlead | grep -E '^--')"
compare "he's options" "$("$tools/he" --help | grep -oE '^  -[-a-z]*( FILE)?' | sed 's/^  //')" \
  "$(entries he | grep -E '^-')"
compare "he's forms" "$("$tools/he" --help | grep -oE '^  net[^ ]*' | sed 's/^  //')" \
  "$(entries he | sed 's/^\.B //' | grep '^net')"

if command -v mandoc >/dev/null; then
  mandoc -T lint -W warning "$source"/docs/man/*.1 || status=1
else
  echo "mandoc is not there: the pages' form is not checked"
fi
exit $status
