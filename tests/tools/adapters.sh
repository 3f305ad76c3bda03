#!/bin/bash
# adapters.sh SOURCE-FOLDER BUILD-FOLDER CC CXX: the adapters of docs/adapters.md are built as it says and answer what it
# says. CC and CXX are the compilers of this build, with their flags: the adapters must fit the tool.
set -u
shopt -s extglob
source=$1 build=$2 cc=$3 cxx=$4
PATH=$build/tools:$PATH
status=0 checks=0
mkdir -p /prj/board /tmp/work
cd /tmp/work || exit 1
cp "$source"/examples/adapters/* .

expect() {  # expect PATTERN STATUS COMMAND...: the answer matches and so does the exit status
  local pattern=$1 wanted=$2 answer actual=0
  shift 2
  answer=$("$@" 2>&1) || actual=$?
  checks=$((checks + 1))
  # shellcheck disable=SC2053 # a pattern
  [[ $actual = "$wanted" && $answer == $pattern ]] && return
  echo "$*: status $actual (expected $wanted), answer '$answer' (expected '$pattern')"
  status=1
}

flags="-shared -fPIC -I$source/include -L$build -lfairlead"
$cc $flags -o clock.adp clock.c && $cxx $flags -std=c++20 -o counter.adp counter.cpp || exit 1
cp clock.adp counter.adp led.ash /prj/board/

for option in "" -s; do
  expect '{"uptime":"+([0-9])"}' 0 he $option board/clock
  expect '+([0-9])' 0 he $option board/clock:uptime
  expect '[0-2][0-9]:[0-5][0-9]' 0 he $option 'board/clock.format[%H:%M]'
  expect '*' 1 he $option board/clock.format
  expect '{"format":{"opt":"pattern","intro":"the local time by a strftime pattern"}}' 0 he $option board/clock.
  expect '*' 3 he $option board/clock:nothing
  expect 2 0 he $option 'board/counter.add[2]'
  expect 0 0 he $option board/counter
  expect '*' 1 he $option board/counter=many
  expect '' 0 he $option board/counter.reset
  expect '' 0 he $option board/led:colour=red
  expect '{"colour":"red","period":"0"}' 0 he $option board/led
  expect '' 0 he $option 'board/led.blink[250,blue,]'
  expect '{"colour":"blue","period":"250"}' 0 he $option board/led
  expect '*' 1 he $option board/led:colour=pink
  expect '*' 1 he $option 'board/led.blink[$(touch${IFS}ran),red,]'
  expect '{"colour":"blue","period":"250"}' 0 he $option board/led
  expect '' 0 env paramter1=9 paramter2=red he $option 'board/led.blink[]'
  expect '{"colour":"blue","period":"500"}' 0 he $option board/led
  expect '{"blink":*}' 0 he $option board/led.
  expect '' 0 he $option board/led.off
  expect '*' 1 he $option board/led.none
done

[ ! -e ran ] || { echo "a parameter was run"; status=1; }
grep -qF "[\`clock.c\`](../examples/adapters/clock.c)" "$source/docs/adapters.md" || { echo "docs/adapters.md no longer names clock.c"; status=1; }
echo "$checks answers"
exit $status
