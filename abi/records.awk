# Reads `readelf --debug-dump=rawline --debug-dump=info` of a program that includes every public header. Tells, of what the
# headers below `include` define: with what=layouts each record with its size, and each member with offset, size and name;
# with what=constants each enumerator with its value.
function value(line) { sub(/^[^:]*: */, "", line); sub(/^\(indirect.*offset: 0x[0-9a-f]*\): */, "", line); return line }
function reference(line) { return substr(line, match(line, /<0x/) + 3, length(line) - RSTART - 3) }

function size_of(type) {
  if (tag[type] ~ /pointer_type/) return pointer_size
  if (tag[type] ~ /array_type/) return elements[type] * size_of(refers[type])
  if (type in bytes) return bytes[type]
  return type in refers ? size_of(refers[type]) : 0
}

function ours(die) { return index(folder[folder_of[file[die]]] "/", include "/") == 1 }

function print_record(record, title,    i, member) {
  printf "%s, %d bytes\n", title, bytes[record]
  for (i = 1; i <= members[record]; i++) {
    member = member_of[record, i]
    if (member in bits) printf "bit %4d %5d  %s\n", place[member], bits[member], name[member]
    else printf "%8d %5d  %s\n", place[member], size_of(refers[member]), name[member]
  }
}

/The Directory Table/ { table = "folders"; next }
/The File Name Table/ { table = "files"; next }
/Contents of the .debug_info section/ { table = "info" }
table == "folders" && $1 ~ /^[0-9]+$/ { folder[$1] = $2; next }
table == "files" && $1 ~ /^[0-9]+$/ { folder_of[$1] = $2; next }
table != "info" { next }

/^ *Pointer Size:/ { pointer_size = $3 }
/^ *<[0-9a-f]+><[0-9a-f]+>: Abbrev Number: 0/ { next }
/^ *<[0-9a-f]+><[0-9a-f]+>: Abbrev Number/ {
  split($1, part, /[<>]+/)
  depth = part[2]
  die = part[3]
  tag[die] = $NF
  stack[depth] = die
  owner = stack[depth - 1]
  count++
  order[count] = die
  if (tag[die] ~ /_member/) member_of[owner, ++members[owner]] = die
  if (tag[die] ~ /subrange_type/) elements[owner] = elements[owner] ? elements[owner] : 1
  next
}
/DW_AT_name/ { name[die] = value($0) }
/DW_AT_decl_file/ { file[die] = value($0) + 0 }
/DW_AT_byte_size/ { bytes[die] = value($0) + 0 }
/DW_AT_type/ { refers[die] = reference($0) }
/DW_AT_bit_size/ { bits[die] = value($0) + 0 }
/DW_AT_data_member_location|DW_AT_data_bit_offset/ { place[die] = value($0) + 0 }
/DW_AT_const_value/ { constant[die] = value($0) }
/DW_AT_upper_bound/ && tag[die] ~ /subrange_type/ { elements[owner] *= value($0) + 1 }
/DW_AT_count/ && tag[die] ~ /subrange_type/ { elements[owner] *= value($0) }

END {
  for (i = 1; i <= count; i++) {
    die = order[i]
    if (what == "constants" && tag[die] ~ /enumeration_type/ && ours(die)) inside = 1
    else if (tag[die] !~ /enumerator/) inside = 0
    if (what == "constants" && inside && tag[die] ~ /enumerator/) print name[die], constant[die]
    if (what == "layouts" && tag[die] ~ /structure_type|union_type/ && die in bytes && ours(die))
      print_record(die, (tag[die] ~ /union/ ? "union " : "struct ") (die in name ? name[die] : "without a name"))
  }
}
