// Slash paths: a text cut at "/" into segments.
#include "base/ascii.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/talk/path.h"
#include "talk/pieces.h"

namespace {

using fairlead::BoundedText;
using fairlead::fail;
using fairlead::kPathSize;
using fairlead::OwnedText;

char* skip_slashes(char* text) { return fairlead::skip(text, '/'); }

}  // namespace

extern "C" int SlashAnalysis(slash_t* slash, char* text) {
  if (!slash || !text) return fail<int>(EINVAL);
  slash->count = 0;
  slash->string = nullptr;
  char* at = skip_slashes(fairlead::trim(text));
  while (at && *at && slash->count < SLASH_MAX) {
    slash->segment[slash->count++] = at;
    at = strchr(at, '/');
    if (at) {
      *at = '\0';
      at = skip_slashes(at + 1);
    }
  }
  return slash->count > 0 ? 1 : 0;
}

extern "C" int SlashCount(const slash_t* slash) {
  if (!slash) return fail(EINVAL, -1);
  return slash->count;
}

extern "C" char* SlashGet(const slash_t* slash, int index) {
  const int slot = slash ? fairlead::slot_of(index, slash->count, slash->count) : -1;
  if (slot < 0) return fail<char*>(EINVAL);
  return slash->segment[slot];
}

extern "C" char* SlashString(slash_t* slash) {
  if (!slash) return fail<char*>(EINVAL);
  if (slash->string || slash->count < 1) return slash->string;
  OwnedText block(static_cast<char*>(malloc(kPathSize)));
  if (!block) return nullptr;

  BoundedText path(block.get(), kPathSize);
  for (int i = 0; i < slash->count && slash->segment[i]; ++i) {
    if (i > 0) path.add('/');
    path.add(slash->segment[i]);
  }
  slash->string = block.release();
  return slash->string;
}

extern "C" void SlashClear(slash_t* slash) {
  if (!slash) {
    errno = EINVAL;
    return;
  }
  free(slash->string);  // the pointer stays: the next analysis forgets it
}
