#!/bin/sh
# lingering.ash - an adapter that answers and leaves a process behind, which holds the channel open
# for a minute.
printf 'here it is' >&"$pipeid"
sleep 60 >&"$pipeid" 2>&1 &
