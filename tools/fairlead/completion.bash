# Completes fairlead in bash. What can follow comes from the tool itself, so that it is never out of date.

_fairlead_names() {  # _fairlead_names NOUN VERB: what the device has of the kind that the command takes
  case $1 in
    service) fairlead service list --json 2>/dev/null | grep -o '"[^"]*":{' | tr -d '":{' ;;
    project) fairlead project list 2>/dev/null | cut -f 1 ;;
    config) fairlead config list 2>/dev/null | cut -f 1 ;;
    value) fairlead value list 2>/dev/null | cut -f 1 ;;
    adapter | joint) fairlead project list 2>/dev/null | cut -f 1 | while read -r project; do
        fairlead project list "$project" 2>/dev/null | sed -n 's,^adapters/,,p' | cut -f 1
      done ;;
    net) sed -n 's/^ *\([^ :]*\):.*/\1/p' /proc/net/dev 2>/dev/null ;;
    log) case $2 in
        level | write) echo emerg alert error warn notice info debug ;;
        mode) echo syslog console where ;;
      esac ;;
  esac
}

_fairlead() {
  local current=${COMP_WORDS[COMP_CWORD]} noun=${COMP_WORDS[1]-} verb=${COMP_WORDS[2]-} words list word
  case $COMP_CWORD in
    1) words=$(fairlead --commands | cut -d ' ' -f 1 | sort -u) ;;
    2) words=$(fairlead --commands | awk -v noun="$noun" '$1 == noun && $2 != "-" { print $2 }') ;;
    *) words=$(_fairlead_names "$noun" "$verb") ;;
  esac
  if [[ $current == -* ]]; then
    words=$(fairlead --commands | awk -v noun="$noun" -v verb="$verb" '$1 == noun && ($2 == verb || $2 == "-") {
      for (i = 3; i <= NF; ++i) if ($i ~ /^--/) print $i }')
  fi
  # Quoted, and not by compgen -W, which would run what a name says: names may come from outside of the device.
  COMPREPLY=()
  read -r -d '' -a list <<<"$words"
  for word in "${list[@]}"; do
    [[ $word != "$current"* ]] || COMPREPLY+=("$(printf %q "$word")")
  done
}

complete -o default -F _fairlead fairlead
