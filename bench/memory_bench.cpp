// What a parsed document takes of the heap, in fairlead and in each other library: the calls that
// allocate, and the bytes that are held afterwards, the allocator's own eight for a block included.
//
// usage: memory_bench
#include <malloc.h>

#include <cstdio>
#include <cstdlib>

#include "documents.h"
#include "peers/peer.h"

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);
}

namespace {

constexpr long kHeader = 8;  // of glibc, before each block

struct {
  long calls = 0, bytes = 0;
} heap;

void* count_block(void* block) {
  if (!block) return block;
  ++heap.calls;
  heap.bytes += static_cast<long>(malloc_usable_size(block)) + kHeader;
  return block;
}

void forget_block(void* block) {
  if (block) heap.bytes -= static_cast<long>(malloc_usable_size(block)) + kHeader;
}

}  // namespace

// In place of the C library's, for all that is linked to this program.
extern "C" {
void* malloc(size_t size) { return count_block(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return count_block(__libc_calloc(count, size)); }
void* realloc(void* block, size_t size) {
  forget_block(block);
  return count_block(__libc_realloc(block, size));
}
void free(void* block) {
  forget_block(block);
  __libc_free(block);
}
}

namespace {

// The documents hold objects and strings only, and no colon inside a string: each value but the
// root follows one.
long values_in(const std::string& text) {
  long values = 1;
  for (const char each : text) values += each == ':';
  return values;
}

void measure(const bench::Document& document, const bench::Peer& peer) {
  const auto before = heap;
  void* parsed = peer.parse(document.text);
  if (!parsed) abort();
  const long calls = heap.calls - before.calls, bytes = heap.bytes - before.bytes;
  peer.drop(parsed);
  printf("memory/%s/%s values %ld allocations %ld bytes %ld\n", document.name.c_str(), peer.name,
         values_in(document.text), calls, bytes);
}

}  // namespace

int main() {
  for (const bench::Document& document : bench::documents())
    for (const bench::Peer* peer : bench::kPeers) {
      const std::string warmed = "{\"a\":\"b\"}";  // what a library makes once does not count
      peer->drop(peer->parse(warmed));
      measure(document, *peer);
    }
  return 0;
}
