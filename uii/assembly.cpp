// Writes the text of an identifier, every piece bounded.
#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/result_buffer.h"
#include "fairlead/uii.h"

namespace {

// Longer interface names are cut: the record of a service has no room for more.
constexpr size_t kInterfaceLimit = 63;

// Result of calls without a buffer, valid until the next one: callers use one thread at a time.
struct State {
  char text[4096];
};
State state;

}  // namespace

extern "C" char* UiiAssembly(const char* object, const char* interface, const char* parameter,
                             char* buffer, int size) {
  if (!object) return fairlead::fail<char*>(EINVAL);
  const auto result = fairlead::choose_buffer(buffer, size, state.text);
  // The object may be what the same buffer got from an earlier call.
  fairlead::BoundedText text(result.text, result.size, object);

  if (!interface) return text.text();
  text.add('.').add({interface, strnlen(interface, kInterfaceLimit)});
  if (parameter) text.add('[').add(parameter).add(']');
  return text.text();
}
