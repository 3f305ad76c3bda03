// The allocator's stand-ins. Blocks come from the real allocator and are freed by it; under the
// address sanitizer that is the sanitizer's own, so a block lost on the way out of a failure is
// reported.
#include <dlfcn.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "support/faults.h"

#if defined REAL_ALLOCATOR_IS_SANITIZER
#define REAL(name) __interceptor_##name
#elif defined REAL_ALLOCATOR_IS_VALGRIND
#define REAL(name) next_##name
#else
#define REAL(name) __libc_##name
#endif

extern "C" {

#ifdef REAL_ALLOCATOR_IS_VALGRIND
// It takes over what is called by the C library's public names, and nothing else.
#define FIND_NEXT(result, name, parameters, arguments)                                         \
  static result REAL(name) parameters {                                                        \
    static const auto found = reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name)); \
    return found arguments;                                                                    \
  }
FIND_NEXT(void*, malloc, (size_t size), (size))
FIND_NEXT(void*, calloc, (size_t count, size_t size), (count, size))
FIND_NEXT(void*, realloc, (void* block, size_t size), (block, size))
#else
void* REAL(malloc)(size_t size);
void* REAL(calloc)(size_t count, size_t size);
void* REAL(realloc)(void* block, size_t size);
#endif

void* malloc(size_t size) {
  if (fairlead_test::judge(fairlead_test::Call::kMalloc).fails) return nullptr;
  return REAL(malloc)(size);
}

void* calloc(size_t count, size_t size) {
  if (fairlead_test::judge(fairlead_test::Call::kMalloc).fails) return nullptr;
  return REAL(calloc)(count, size);
}

void* realloc(void* block, size_t size) {
  if (fairlead_test::judge(fairlead_test::Call::kMalloc).fails) return nullptr;
  return REAL(realloc)(block, size);
}

// A sanitizer's own strdup and strndup would not come here for their block.
char* strndup(const char* text, size_t limit) {
  const size_t length = strnlen(text, limit);
  char* const copy = static_cast<char*>(malloc(length + 1));
  if (!copy) return nullptr;
  memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

char* strdup(const char* text) { return strndup(text, SIZE_MAX); }

}  // extern "C"

namespace fairlead_test {
void use_malloc_stand_ins() {}
}  // namespace fairlead_test
