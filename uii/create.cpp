// Identifier records: made from a text, from texts to join, from a format; and released.
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "base/fail.h"
#include "base/formatted_text.h"
#include "base/owned.h"
#include "fairlead/uii.h"
#include "log/out_of_memory.h"
#include "uii/owned_uii.h"
#include "uii/pieces.h"

namespace {

using fairlead::fail;
using fairlead::kUiiSource;
using fairlead::out_of_memory;
using fairlead::OwnedText;

// Parses a text that the new record takes over.
uii_t* create_from(OwnedText text) {
  auto record = fairlead::zeroed<uii_t>();
  if (!record) return out_of_memory<uii_t*>(kUiiSource);
  fairlead::OwnedUii uii(record.release());
  uii->text = text.release();
  return UiiAnalysis(uii.get()) ? uii.release() : nullptr;
}

// A length that has no number is the largest, for which there is no memory.
size_t joined_length(int count, const char* const* text) {
  constexpr size_t kLongest = SIZE_MAX - 1;
  size_t length = 0;
  for (int i = 0; i < count && text[i]; ++i) {
    const size_t more = strlen(text[i]);
    if (more > kLongest - length) return kLongest;
    length += more;
  }
  return length;
}

void join(int count, const char* const* text, char* target) {
  *target = '\0';
  for (int i = 0; i < count && text[i]; ++i) target = stpcpy(target, text[i]);
}

}  // namespace

extern "C" uii_t* UiiCreate(const char* text) {
  if (!text || !*text) return fail<uii_t*>(EINVAL);
  OwnedText copy(strdup(text));
  if (!copy) return out_of_memory<uii_t*>(kUiiSource);
  return create_from(std::move(copy));
}

extern "C" uii_t* UiiBuild(int count, const char* const* text) {
  if (count < 1 || !text) return fail<uii_t*>(EINVAL);
  const size_t length = joined_length(count, text);
  if (length == 0) return fail<uii_t*>(EINVAL);

  OwnedText joined(static_cast<char*>(malloc(length + 1)));
  if (!joined) return out_of_memory<uii_t*>(kUiiSource);
  join(count, text, joined.get());
  return create_from(std::move(joined));
}

extern "C" uii_t* UiiFormat(const char* format, ...) {
  if (!format) return fail<uii_t*>(EINVAL);
  va_list arguments;
  va_start(arguments, format);
  OwnedText text = fairlead::format_text(format, arguments);
  va_end(arguments);
  if (!text) return errno == ENOMEM ? out_of_memory<uii_t*>(kUiiSource) : nullptr;
  return create_from(std::move(text));
}

extern "C" void UiiFree(uii_t* uii) {
  if (!uii) {
    errno = EINVAL;
    return;
  }
  fairlead::release_pieces(uii);
  OwnedText text(uii->text);
  fairlead::Owned<uii_t> record(uii);
}
