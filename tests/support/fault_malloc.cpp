// The allocator's stand-ins. Blocks come from the real allocator and are freed by it; under the
// address sanitizer that is the sanitizer's own, so a block lost on the way out of a failure is
// reported.
#include <cerrno>
#include <cstddef>

#include "support/faults.h"

#ifdef __SANITIZE_ADDRESS__
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif

extern "C" {

void* REAL(malloc)(size_t size);
void* REAL(calloc)(size_t count, size_t size);
void* REAL(realloc)(void* block, size_t size);

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

}  // extern "C"
