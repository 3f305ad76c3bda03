// Cuts the working copy of an identifier into its pieces: one small function per form.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/ascii.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "fairlead/uii.h"
#include "log/out_of_memory.h"
#include "talk/pieces.h"
#include "uii/pieces.h"

namespace {

using fairlead::fail;

constexpr char kBlanks[] = " \t\n\r";
constexpr char kMarkers[] = ".:=|";

void strip_end(char* text, const char* unwanted) {
  size_t length = strlen(text);
  while (length > 0 && strchr(unwanted, text[length - 1])) --length;
  text[length] = '\0';
}

// Ends the text before the marker and gives what follows it.
char* cut(char* marker) {
  *marker = '\0';
  return marker + 1;
}

char* last_operator(char* text) {
  char* equals = strrchr(text, '=');
  char* bar = strrchr(text, '|');
  return bar && (!equals || bar > equals) ? bar : equals;
}

void take_value(uii_t* uii, char* marker) {
  uii->kind = *marker == '=' ? UII_SET : UII_MERGE;
  char* text = fairlead::skip_white_space(cut(marker));
  strip_end(text, kBlanks);
  if (*text) uii->value = text;
}

void take_config(uii_t* uii, char* text) {
  uii->kind = UII_READ;
  char* marker = last_operator(text);
  if (marker) take_value(uii, marker);
  if (*text) SlashAnalysis(&uii->config, text);
}

// The closing bracket is not looked for: all of them at the end go, with the blanks between.
void take_parameters(uii_t* uii, char* text) {
  strip_end(text, " \t\n\r]");
  if (*text) ParamAnalysis(&uii->parameter, text);
}

void take_call(uii_t* uii, char* text) {
  uii->kind = UII_CALL;
  char* bracket = strchr(text, '[');
  if (bracket) take_parameters(uii, cut(bracket));
  if (*text) uii->interface = text;
}

void take_form(uii_t* uii, char* marker) {
  switch (*marker) {
    case '.':
      return take_call(uii, cut(marker));
    case ':':
      return take_config(uii, cut(marker));
    default:
      return take_value(uii, marker);
  }
}

}  // namespace

void fairlead::release_pieces(uii_t* uii) {
  ErrnoKeeper keep;
  SlashClear(&uii->object);
  SlashClear(&uii->config);
  ParamClear(&uii->parameter);
  if (uii->talk) TalkFree(uii->talk);
  free(uii->work);

  char* text = uii->text;
  *uii = {};
  uii->text = text;
}

extern "C" int UiiAnalysis(uii_t* uii) {
  if (!uii || !uii->text || !*uii->text) return fail<int>(EINVAL);
  fairlead::release_pieces(uii);
  uii->work = strdup(uii->text);
  if (!uii->work) return fairlead::out_of_memory<int>(fairlead::kUiiSource);

  char* object = fairlead::skip_white_space(uii->work);
  if (!*object) return fail<int>(EINVAL);
  char* marker = object + strcspn(object, kMarkers);
  if (*marker && marker != object) take_form(uii, marker);
  if (!fairlead::all_entries_made(uii->parameter))
    return fairlead::out_of_memory<int>(fairlead::kUiiSource);
  return SlashAnalysis(&uii->object, object) ? 1 : fail<int>(EINVAL);
}
