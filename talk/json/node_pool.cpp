// Slabs that are filled, left and freed.
#include "talk/json/node_pool.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr uint32_t kFilling = uint32_t{1} << 31;

constexpr size_t kSmallestSlab = 256;
constexpr size_t kLargestSlab = 4096 - 2 * sizeof(void*);  // with what malloc adds, a page

// A sanitizer watches blocks, so that there each node has a slab of its own.
#ifdef FAIRLEAD_SANITIZED
constexpr bool kOneEach = true;
#else
constexpr bool kOneEach = false;
#endif

}  // namespace

void fairlead::leave_slab(NodeSlab* slab, uint32_t nodes) {
  if (__atomic_sub_fetch(&slab->live, nodes, __ATOMIC_ACQ_REL) == 0) free(slab);
}

namespace fairlead {

NodePoolState NodePool::pause() { return std::exchange(state_, {nullptr, 0}); }

json_t* NodePool::place_anew(size_t size) {
  if (size > kLongestShared) return node_alone(size);
  if (state_.total < kSmallestSlab) {
    state_.total += size;
    return node_alone(size);
  }
  return open_slab(size) ? place(size) : nullptr;
}

// Replaces the slab by one with room for as much as was made so far.
bool NodePool::open_slab(size_t size) {
  const size_t room = kOneEach ? size : std::min(state_.total, kLargestSlab - sizeof(NodeSlab));
  const size_t bytes = sizeof(NodeSlab) + room;
  auto* const slab = static_cast<NodeSlab*>(malloc(bytes));
  if (!slab) return false;
  close();
  *slab = {kFilling, 0, sizeof(NodeSlab), static_cast<uint32_t>(bytes)};
  state_ = {slab, state_.total + room};
  return true;
}

void NodePool::close() {
  if (state_.slab) leave_slab(state_.slab, kFilling - state_.slab->made);
  state_.slab = nullptr;
}

}  // namespace fairlead
