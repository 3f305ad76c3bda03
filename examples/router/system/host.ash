#!/bin/sh
# host.ash - the adapter of system/host, a script: what the machine is called and what it runs.
#
# The request comes in variables: "interface" is ":" for a read, "=" for a write, "." for the listing
# of interfaces, or the name of one to call; "config" is the path inside the object. The answer goes
# to the descriptor whose number is in "pipeid". The byte \002 is a refusal.
refuse() { printf '\002'; }

answer() {
  case $interface in
    .) echo '{"kernel":{"opt":"","intro":"name and release of the kernel"}}' ;;
    :) read_setting ;;
    kernel) uname -sr ;;
    *) refuse ;;
  esac
}

read_setting() {
  case $config in
    '') printf '{"name":"%s","machine":"%s"}' "$(uname -n)" "$(uname -m)" ;;
    name) uname -n ;;
    machine) uname -m ;;
  esac
}

answer >&"$pipeid"
