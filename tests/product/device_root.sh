#!/bin/sh
# device_root.sh DEVICE-ROOT: the private root works for root and for an ordinary user, and says in one line when it
# cannot. What the machine does not allow is skipped by name.
set -u
folder=$(mktemp -d /tmp/fairlead-device-root.XXXXXX)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/tools"
cp "$1" "$folder/tools/device-root"
chmod -R a+rx "$folder"
cd "$folder" || exit 1

status=0 ran=0 skipped=
check() {  # check NAME EXPECTED COMMAND...: the command's output is the expected one
  name=$1 expected=$2
  shift 2
  actual=$("$@" 2>&1)
  ran=$((ran + 1))
  [ "$actual" = "$expected" ] && { echo "$name: as expected"; return; }
  printf '%s: expected\n%s\ngot\n%s\n' "$name" "$expected" "$actual"
  status=1
}
skip() { skipped="$skipped, $1"; }

inside='echo x >/prj/f && echo x >/etc/config/f && echo x >/tmp/.var/f && ls -A /prj /etc/config /tmp/.var | xargs'
listing='/etc/config: f /prj: f /tmp/.var: f'
refusal="device-root: no private root can be made here: this kernel allows user namespaces to root only"
as_user() { setpriv --reuid=65534 --regid=65534 --clear-groups "$@"; }
no_namespaces='echo 0 >/proc/sys/user/max_user_namespaces && "$@"'

check "whoever runs the tests" "$listing" tools/device-root sh -c "$inside"
check "the exit status" 7 sh -c 'tools/device-root sh -c "exit 7"; echo $?'
check "nested" inside tools/device-root tools/device-root echo inside
check "no command" "usage: device-root CMD..." tools/device-root

if [ "$(id -u)" = 0 ]; then
  if as_user unshare -U true 2>/dev/null; then
    check "an ordinary user" "$listing" setpriv --reuid=65534 --regid=65534 --clear-groups tools/device-root sh -c "$inside"
  else
    check "an ordinary user of a kernel that allows none" "$refusal" \
      setpriv --reuid=65534 --regid=65534 --clear-groups tools/device-root true
  fi
else
  skip "as another user (needs root)"
fi

if unshare -U --map-user=1000 --keep-caps sh -c "$no_namespaces" sh true 2>/dev/null; then
  check "an ordinary user without namespaces" "$refusal" \
    unshare -U --map-user=1000 --keep-caps sh -c "$no_namespaces" sh tools/device-root true
else
  skip "an ordinary user without namespaces (they cannot be switched off here)"
fi
if unshare -Ur sh -c "$no_namespaces" sh unshare -m true 2>/dev/null; then
  check "root without namespaces" "$listing" unshare -Ur sh -c "$no_namespaces" sh tools/device-root sh -c "$inside"
else
  skip "root without namespaces (they cannot be switched off here)"
fi

echo "$ran cases${skipped:+; skipped$skipped}"
exit $status
