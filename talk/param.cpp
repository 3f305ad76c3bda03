// Parameter lists: a text cut at its top-level commas.
#include <cstddef>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/path.h"
#include "fairlead/talk/text.h"
#include "talk/pieces.h"

namespace {

using fairlead::BoundedText;
using fairlead::fail;
using fairlead::OwnedText;

// Tells which characters stand outside of quotes, brackets and braces.
class Nesting {
 public:
  // Counts a character and tells whether it stands at the top level.
  bool top_level(char c) {
    if (c == '"') quoted_ = !quoted_;
    if (quoted_) return false;
    if (c == '[') ++brackets_;
    if (c == ']') --brackets_;
    if (c == '{') ++braces_;
    if (c == '}') --braces_;
    return brackets_ == 0 && braces_ == 0;
  }

 private:
  bool quoted_ = false;
  ptrdiff_t brackets_ = 0;
  ptrdiff_t braces_ = 0;
};

void add_entry(param_t* param, char* text) {
  auto* entry = fairlead::zeroed<param_entry_t>().release();
  if (entry) entry->text = text;
  param->entry[param->count++] = entry;
}

// Known only now: the separators behind the texts have become terminators meanwhile.
void drop_empty_texts(param_t* param) {
  for (int i = 0; i < param->count; ++i) {
    param_entry_t* entry = param->entry[i];
    if (entry && entry->text[0] == '\0') entry->text = nullptr;
  }
}

const char* text_at(const param_t* param, int slot) {
  const param_entry_t* entry = param->entry[slot];
  return entry && entry->text ? entry->text : "";
}

// The slot that ParamGetS and ParamGetT read: -1 is the parameter before the last, as callers know
// it.
int text_slot(const param_t* param, int index) {
  return param ? fairlead::slot_of(index, param->count - 1, param->count) : -1;
}

}  // namespace

extern "C" int ParamAnalysis(param_t* param, char* text) {
  if (!param || !text) return fail<int>(EINVAL);
  char* at = fairlead::trim(text);
  if (!*at) return fail<int>(EINVAL);

  param->count = 0;
  add_entry(param, at);
  Nesting nesting;
  while (*at && param->count < PARAM_MAX) {
    const char c = *at;
    const bool separates = nesting.top_level(c) && (c == ',' || c == ' ');
    if (separates) *at = '\0';
    ++at;
    if (separates && c == ',') {
      at = fairlead::skip(at, ' ');
      add_entry(param, at);
    }
  }
  drop_empty_texts(param);
  return 1;
}

extern "C" int ParamCount(const param_t* param) {
  if (!param) return fail(EINVAL, -1);
  return param->count;
}

extern "C" param_entry_t* ParamGet(const param_t* param, int index) {
  const int slot = param ? fairlead::slot_of(index, param->count, param->count) : -1;
  if (slot < 0) return fail<param_entry_t*>(EINVAL);
  return param->entry[slot];
}

extern "C" char* ParamGetS(const param_t* param, int index) {
  const int slot = text_slot(param, index);
  if (slot < 0) return fail<char*>(EINVAL);
  const param_entry_t* entry = param->entry[slot];
  return entry ? entry->text : nullptr;
}

extern "C" talk_t* ParamGetT(param_t* param, int index) {
  const int slot = text_slot(param, index);
  if (slot < 0) return fail<talk_t*>(EINVAL);
  param_entry_t* entry = param->entry[slot];
  if (!entry) return nullptr;
  if (!entry->talk && entry->text) entry->talk = StringTalk(entry->text);
  return entry->talk;
}

extern "C" char* ParamString(param_t* param) {
  if (!param) return fail<char*>(EINVAL);
  if (param->string || param->count < 1) return param->string;
  size_t size = static_cast<size_t>(param->count);  // a separator or the terminator each
  for (int i = 0; i < param->count; ++i) size += strlen(text_at(param, i));
  OwnedText block(static_cast<char*>(malloc(size)));
  if (!block) return nullptr;

  BoundedText list(block.get(), size);
  for (int i = 0; i < param->count; ++i) {
    if (i > 0 && !param->entry[i]) break;
    if (i > 0) list.add(',');
    list.add(text_at(param, i));
  }
  param->string = block.release();
  return param->string;
}

extern "C" void ParamClear(param_t* param) {
  if (!param) {
    errno = EINVAL;
    return;
  }
  for (int i = 0; i < param->count; ++i) {
    if (param->entry[i]) TalkFree(param->entry[i]->talk);
    free(param->entry[i]);
  }
  free(param->string);
}
