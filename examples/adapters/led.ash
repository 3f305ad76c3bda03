#!/bin/sh
# led.ash - a status light as a script adapter: set, get, list and two interfaces.
#
# The request arrives in the environment ($interface, $config, $value, $paramter1 ...), the answer goes to the
# descriptor whose number is in $pipeid. The light is a file here; on a board it would be /sys/class/leds/NAME.

state=/tmp/led.$(echo "$adp" | tr / .)

answer() { printf '%s' "$1" >&"$pipeid"; }
done_() { printf '\001' >&"$pipeid"; }
failed() { printf '\002' >&"$pipeid"; }

# Read as text, never as a part of the script: what callers sent may stand in it.
read_state() { colour=off period=0; [ ! -f "$state" ] || read -r colour period <"$state"; }
write_state() { printf '%s %s\n' "$colour" "$period" >"$state"; }

known_colour() { case $1 in off | red | green | blue) return 0 ;; *) return 1 ;; esac; }
is_period() { case $1 in '' | *[!0-9]*) return 1 ;; *) return 0 ;; esac; }

case $interface in
  =) # set: $config is the path inside the object, $value what to put there; both may be unset
    read_state
    case $config in
      colour) known_colour "$value" && colour=$value && write_state && done_ || failed ;;
      *) failed ;;
    esac ;;
  :) # get
    read_state
    case $config in
      '') answer "{\"colour\":\"$colour\",\"period\":\"$period\"}" ;;
      colour) answer "$colour" ;;
      period) answer "$period" ;;
    esac ;; # anything else: no answer, nothing there
  .) # list of interfaces
    answer '{"blink":{"opt":"period,colour","intro":"blink at a period in milliseconds"},"off":{"intro":"go dark"}}' ;;
  blink) # of N parameters, $paramter1 to $paramter<N-1> are handed over: callers add one more at the end
    read_state
    [ "$paramter_count" -gt 1 ] && [ -n "$paramter1" ] && period=$paramter1 || period=500
    [ "$paramter_count" -gt 2 ] && [ -n "$paramter2" ] && colour=$paramter2
    is_period "$period" && known_colour "$colour" && write_state && done_ || failed ;;
  off)
    colour=off period=0
    write_state && done_ ;;
  *) failed ;;
esac
