#!/bin/sh
# full_output.sh HE FAIRLEAD: a tool that cannot write its answer, short or long, its own or a child's, fails and tells why.
set -u
failed=0
tells() {
  said=$("$@" 2>&1 >/dev/full)
  status=$?
  [ "$status: $said" = "1: ${1##*/}: standard output: No space left on device" ] && return
  echo "$*: status $status, said: $said"
  failed=1
}

tells "$1" --version
tells "$1" --help
tells "$2" --version
tells "$2" --help
mkdir -p /prj/lab
printf '#!/bin/sh\nprintf %%s "{\\"on\\":{\\"intro\\":\\"light\\"}}" >&"$pipeid"\n' >/prj/lab/led.ash
chmod +x /prj/lab/led.ash
"$2" adapter call-list lab/led | grep -q light || { echo "the adapter does not answer"; failed=1; }
tells "$2" adapter call-list lab/led
exit $failed
