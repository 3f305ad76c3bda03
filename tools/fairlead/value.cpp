// Shared named values, whose bytes may be anything.
#include <cctype>
#include <cerrno>
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

// The store of --store; handles are never closed. False after a complaint.
bool open_store(const Call& call, gvalue_t*& store) {
  store = nullptr;
  if (!call.options.store) return true;
  store = GvalueCreate(call.options.store);
  if (store) return true;
  fail_because(errno, "store '%s'", call.options.store);
  return false;
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
  if (!open_store(call, store)) return kFailed;
  const fairlead::OwnedTalk values(GvalueList(store));
  if (!values) return nothing("there are no values");
  return show(call, values.get());
}

Exit value_get(const Call& call) {
  gvalue_t* store = nullptr;
  if (!open_store(call, store)) return kFailed;
  const char* name = call.argument(0);
  const int size = GvalueSize(store, name);
  const auto* bytes = static_cast<const char*>(size < 0 ? nullptr : GvalueGet(store, name));
  if (!bytes) return nothing("there is no value '%s'", name);
  if (!call.options.integer) return show_bytes(call, bytes, static_cast<size_t>(size));
  uint32_t number = 0;
  if (size != static_cast<int>(sizeof number))
    return fail("'%s' has %d bytes, a number has 4", name, size);
  memcpy(&number, bytes, sizeof number);
  return show_number(call, "value", static_cast<long>(number));
}

Exit value_set(const Call& call) {
  gvalue_t* store = nullptr;
  if (!open_store(call, store)) return kFailed;
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
