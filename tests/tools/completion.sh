#!/bin/bash
# completion.sh SOURCE-FOLDER TOOLS-FOLDER: what bash offers for a begun command line.
set -u
PATH=$2:$PATH
. "$1/tools/fairlead/completion.bash"
status=0

offers() {  # offers WORD... -- EXPECTED: what is offered for the last word
  local words=() expected
  while [ "$1" != = ]; do words+=("$1"); shift; done
  expected=$2
  COMP_WORDS=(fairlead "${words[@]}") COMP_CWORD=${#words[@]} COMPREPLY=()
  _fairlead
  [ "${COMPREPLY[*]}" = "$expected" ] && return
  echo "fairlead ${words[*]}: offered '${COMPREPLY[*]}', not '$expected'"
  status=1
}

mkdir -p /etc/config/net /prj/lab
echo '{"mtu":"1"}' >/etc/config/net/wan.cfg
offers ser = service
offers service st = "start stop"
offers value get --s = --store
offers config get net = net/wan
offers project install l = lab
offers at /dev/null --ex = --expect
offers service nothing-like-it = ""
offers net info l = lo
offers log level de = debug
offers log mode syslog w = where

# A name is never more than that, not even a command.
cd /tmp || exit
echo '{"mtu":"1"}' >'/etc/config/$(touch${IFS}ran).cfg'
offers config get '$(t' = '\$\(touch\$\{IFS\}ran\)'
[ ! -e ran ] || { echo "what a name said was run"; status=1; }
exit $status
