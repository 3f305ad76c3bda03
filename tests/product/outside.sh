#!/bin/sh
# outside.sh DEVICE-ROOT PROGRAM ARGUMENT...: programs that write to every private place leave nothing on the machine.
set -u
device_root=$1
shift
here=$(cd "$(dirname "$0")" && pwd)
name=fairlead-outside-$$
# The places the library and the tests write to. Other programs of the machine use "/tmp" at the same time, so there
# only names that a run makes are looked at.
state() {
  for path in /prj /etc/config /tmp/.var /tmp/.now /tmp/.syslog /tmp/probe /dev/log /.device-root; do
    if [ -e "$path" ]; then find "$path" -printf '%p %y %i %s %T@ %C@\n' 2>/dev/null | sort; else echo "$path: none"; fi
  done
}

before=$(state)
written=$("$device_root" "$here/writes_everywhere.sh" "$name") || { echo "the private root did not run"; exit 1; }
told=$("$device_root" "$@" 2>&1) || { echo "$told"; echo "$1 failed"; exit 1; }
after=$(state)

status=0
for folder in /prj /etc/config /tmp /tmp/.var; do
  echo "$written" | grep -qx "$folder" || { echo "not writable inside: $folder"; status=1; }
done
if echo "$written" | grep -qE '^/(usr|var|home|opt|srv|run)'; then
  echo "writable inside, but not private:" && echo "$written" && status=1
fi
[ "$before" = "$after" ] || { echo "changed by the run:"; printf '%s\n---\n%s\n' "$before" "$after"; status=1; }
left=$(find / -xdev -maxdepth 3 -name "$name" 2>/dev/null; find /tmp /dev /run -maxdepth 2 -name "$name" 2>/dev/null)
[ -z "$left" ] || { echo "left behind: $left"; rm -f $left; status=1; }
exit $status
