# packages.sh - sourced by the commands that need Debian packages: need_packages NAME... installs what is missing
# and removes nothing: g++-multilib, for one, does not go with the compilers for MIPS.

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; elif command -v sudo >/dev/null; then sudo "$@"; else return 1; fi
}

need_packages() {
  local missing=() name
  for name in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
  done
  [ ${#missing[@]} = 0 ] && return
  echo "installing: ${missing[*]}"
  local log
  log=$(mktemp)
  if ! { as_root apt-get update -qq &&
         as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-remove --no-install-recommends "${missing[@]}"; } >"$log" 2>&1
  then
    tail -n 5 "$log" >&2
    rm -f "$log"
    echo "$(basename "$0"): missing packages that could not be installed: ${missing[*]}" >&2
    exit 1
  fi
  rm -f "$log"
}
