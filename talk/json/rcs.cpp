// The growable string: a text that is always terminated, with its length and its room.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/owned.h"
#include "fairlead/talk/json.h"
#include "talk/json/assertion.h"
#include "talk/json/growing_text.h"

namespace {

using fairlead::Owned;
using fairlead::OwnedText;

// What an append that does not fit gains beyond its need.
constexpr uint32_t kExtraRoom = 5;

// Room for `length` bytes and a terminator; null when that cannot be had.
char* resized(char* buffer, uint32_t length) {
  const size_t size = size_t{length} + 1;
  if (size == 0) return nullptr;  // a 32-bit machine: the terminator has no place
  return static_cast<char*>(realloc(buffer, size));
}

// An append past the 32-bit length ends as any resize that fails.
int grow(rcs_t* rcs, uint64_t length) {
  if (length <= UINT32_MAX) return rcs_resize(rcs, static_cast<uint32_t>(length));
  free(rcs);
  return 0;
}

}  // namespace

extern "C" rcs_t* rcs_create(uint32_t length) {
  Owned<rcs_t> rcs(static_cast<rcs_t*>(malloc(sizeof(rcs_t))));
  if (!rcs) return nullptr;
  *rcs = {resized(nullptr, length), 0, length};
  if (!rcs->text) return nullptr;
  rcs->text[0] = '\0';
  return rcs.release();
}

extern "C" int rcs_resize(rcs_t* rcs, uint32_t length) {
  NODE_ASSERT_GIVEN(rcs);
  char* text = resized(rcs->text, length);
  if (!text) {
    free(rcs);  // the record only: callers may hold the buffer through its address
    return 0;
  }
  rcs->text = text;
  rcs->capacity = length;
  if (rcs->length > length) rcs->length = length;
  text[length] = '\0';
  return 1;
}

extern "C" int rcs_catc(rcs_t* pre, char c) {
  NODE_ASSERT_GIVEN(pre);
  if (pre->length >= pre->capacity && !grow(pre, uint64_t{pre->capacity} + kExtraRoom)) return 0;
  pre->text[pre->length++] = c;
  pre->text[pre->length] = '\0';
  return 1;
}

extern "C" int rcs_catcs(rcs_t* pre, const char* pos, uint32_t n) {
  NODE_ASSERT_GIVEN(pre);
  NODE_ASSERT_GIVEN(pos);
  const uint64_t needed = uint64_t{pre->length} + n;
  if (pre->capacity < needed && !grow(pre, needed + kExtraRoom)) return 0;
  memcpy(pre->text + pre->length, pos, n);
  pre->length = static_cast<uint32_t>(needed);
  pre->text[pre->length] = '\0';
  return 1;
}

extern "C" char* rcs_unwrap(rcs_t* rcs) {
  NODE_ASSERT_GIVEN(rcs);
  OwnedText text(rcs->text);
  free(rcs);
  const size_t size = strlen(text.get()) + 1;
  return fairlead::trim(std::move(text), size);
}

extern "C" void rcs_free(rcs_t** rcs) {
  NODE_ASSERT_GIVEN(rcs);
  if (!*rcs) return;
  free((*rcs)->text);
  free(*rcs);
  *rcs = nullptr;
}

extern "C" uint32_t rcs_length(const rcs_t* rcs) {
  NODE_ASSERT_GIVEN(rcs);
  return rcs->length;
}
