#!/bin/sh
# elsewhere.sh TEST-PROGRAM: where the mark of the private root is missing, a test program ends before it writes.
set -u
rmdir /.device-root || exit 1
told=$("$1" --gtest_filter='HeTest.*' 2>&1) && { echo "it ran"; exit 1; }
echo "$told" | grep -q 'in a private device root only' || { echo "$told"; exit 1; }
left=$(find /prj /etc/config -mindepth 1)
[ -z "$left" ] || { echo "written: $left"; exit 1; }
