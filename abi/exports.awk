# Reads the version script and gcc's list of declarations; tells each exported name with its version node and prototype,
# and the type of each callback. A name without a node, or without a declaration, is told as such.
FNR == NR {
  if ($2 == "{") node = $1
  else if ($1 ~ /^[A-Za-z0-9_]+;$/) node_of[substr($1, 1, length($1) - 1)] = node
  next
}

index($0, "/* variable */") == 1 {
  sub(/^\/\* variable \*\/ extern /, "")
  name = $0
  sub(/[][0-9]*;$/, "", name)
  sub(/.*[ *]/, "", name)
  declaration[name] = $0
}

index($0, include) == 4 || index($0, callbacks) == 4 {
  is_callback = index($0, callbacks) == 4
  sub(/^\/\*.*\*\/ extern /, "")
  if (is_callback) sub(/_target /, " ")
  match($0, /[A-Za-z0-9_]+ \(/)
  name = substr($0, RSTART, RLENGTH - 2)
  if (is_callback) print name " (callback): " $0
  else declaration[name] = $0
}

END {
  for (name in declaration) print name "@" (name in node_of ? node_of[name] : "(no node)") ": " declaration[name]
  for (name in node_of) if (!(name in declaration)) print name "@" node_of[name] ": (not declared)"
}
