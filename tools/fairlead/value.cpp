// Shared named values, whose bytes may be anything.
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/bounded_text.h"
#include "base/owned.h"
#include "fairlead/state/gvalue.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/options.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

// A file that is no store is removed when it is opened as one, so the name must stay in the folder
// of the stores; "%%" would be read as "%".
bool is_store_name(const char* name) {
  return *name && *name != '.' && !strpbrk(name, "/%") && strlen(name) < NAME_MAX;
}

// The store of --store; handles are never closed. Opening makes a store that is missing, so one
// that is only looked at is looked for before.
Exit open_store(const Call& call, bool make, gvalue_t*& store) {
  const char* name = call.options.store;
  store = nullptr;
  if (!name) return kDone;
  if (!is_store_name(name))
    return refuse("--store: '%s' is no name of a store: no '/', no '%%', no '.' at its front",
                  name);
  fairlead::PathText path;
  path.format("/tmp/.var/gvalue/%s", name);
  if (path.cut()) return refuse("--store: '%s' is too long", name);
  if (!make && access(path.text(), F_OK) != 0) return nothing("there is no store '%s'", name);
  store = GvalueCreate(name);
  return store ? kDone : fail_because(errno, "store '%s'", name);
}

// A text there would be no setting for anybody.
bool is_log_setting(const Call& call) {
  const char* name = call.argument(0);
  return !call.options.store && (strcmp(name, "log_level") == 0 || strcmp(name, "log_mode") == 0);
}

// Printable characters, and nothing but NULs behind them.
bool is_text(const char* bytes, size_t size) {
  const size_t length = strnlen(bytes, size);
  for (size_t i = 0; i < length; ++i)
    if (!isprint(static_cast<unsigned char>(bytes[i]))) return false;
  for (size_t i = length; i < size; ++i)
    if (bytes[i] != '\0') return false;
  return length > 0;
}

Exit show_bytes(const Call& call, const char* bytes, size_t size) {
  // Two digits for each byte, or the text and a terminator.
  fairlead::OwnedText text(static_cast<char*>(malloc(2 * size + 1)));
  if (!text) return fail("out of memory");
  fairlead::BoundedText shown(text.get(), 2 * size + 1);
  if (is_text(bytes, size))
    shown.add({bytes, strnlen(bytes, size)});
  else
    for (size_t i = 0; i < size; ++i) shown.format("%02x", static_cast<unsigned char>(bytes[i]));
  return show_text(call, "value", shown.text());
}

}  // namespace

Exit value_list(const Call& call) {
  gvalue_t* store = nullptr;
  if (const Exit refused = open_store(call, false, store); refused != kDone) return refused;
  const fairlead::OwnedTalk values(GvalueList(store));
  if (!values) return nothing("there are no values");
  return show(call, values.get());
}

Exit value_get(const Call& call) {
  gvalue_t* store = nullptr;
  if (const Exit refused = open_store(call, false, store); refused != kDone) return refused;
  const char* name = call.argument(0);
  const int size = GvalueSize(store, name);
  const auto* bytes = static_cast<const char*>(size < 0 ? nullptr : GvalueGet(store, name));
  if (!bytes) return nothing("there is no value '%s'", name);
  if (!call.options.integer) return show_bytes(call, bytes, static_cast<size_t>(size));
  uint32_t number = 0;
  if (size != static_cast<int>(sizeof number))
    return fail("'%s' has %d bytes, a number has 4", name, size);
  memcpy(&number, bytes, sizeof number);
  return show_number(call, "value", number);
}

Exit value_set(const Call& call) {
  gvalue_t* store = nullptr;
  if (is_log_setting(call) && !call.options.integer)
    return refuse("'%s' is a number: use --int, or the verbs of log", call.argument(0));
  if (const Exit refused = open_store(call, true, store); refused != kDone) return refused;
  const char* text = call.argument(1);
  errno = 0;
  int result = 0;
  if (call.options.integer) {
    char* end = nullptr;
    const unsigned long long number = strtoull(text, &end, 0);
    if (!isdigit(static_cast<unsigned char>(*text)) || *end != '\0' || number > UINT32_MAX ||
        errno != 0)
      return refuse("'%s' is no number from 0 to 4294967295", text);
    const auto word = static_cast<uint32_t>(number);
    result = GvalueSet(store, call.argument(0), &word, sizeof word);
  } else {
    result = GvalueSet(store, call.argument(0), text, static_cast<int>(strlen(text)) + 1);
  }
  if (result == 1) return done(call);
  return fail_because(errno, "value '%s' cannot be set", call.argument(0));
}

}  // namespace control
