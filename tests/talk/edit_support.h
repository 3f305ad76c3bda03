// What the tests of whole-document operations share: large, deep and random documents, and a clock.
#pragma once

#include <ctime>
#include <random>
#include <string>

#include "support/small_stack.h"
#include "talk_support.h"

namespace fairlead_test {

// Recursion would need far more than this for a deep document.
inline constexpr size_t kSmallStackKib = 256;
#ifdef FAIRLEAD_SANITIZED
inline constexpr size_t kDeep = 100000;  // each node costs several times as much there
#else
inline constexpr size_t kDeep = 1000000;
#endif

// Objects in each other, `depth` levels, with `value` innermost: {"a":{"a":...value}}.
inline OwnedTalk deep_document(talk_t* value, size_t depth = kDeep) {
  OwnedTalk inner(value);
  for (size_t i = 0; i < depth; ++i) {
    OwnedTalk outer(VesselCreate());
    VesselAdd(outer.get(), AxpCreate("a", inner.release()));
    inner = std::move(outer);
  }
  return inner;
}

// The innermost value of such a document.
inline talk_t* innermost(const OwnedTalk& deep) {
  talk_t* at = deep.get();
  while (at->child) at = at->child;
  return at;
}

// Members named from `first` on, each with the same value.
inline OwnedTalk wide_document(int first, int count, const char* value = "x") {
  OwnedTalk wide(VesselCreate());
  for (int i = first; i < first + count; ++i)
    VesselAdd(wide.get(), AxpCreate(std::to_string(i).c_str(), RenderCreate(value)));
  return wide;
}

// Documents of every shape that a text can hold, with few names, so that namesakes are frequent.
class RandomDocuments {
 public:
  explicit RandomDocuments(unsigned seed) : random_(seed) {}

  OwnedTalk next(int members, int names, int depth) {
    return OwnedTalk(object(members, names, depth));
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<>(0, limit - 1)(random_); }

  talk_t* object(int members, int names, int depth) {
    talk_t* vessel = VesselCreate();
    for (int i = 0; i < members; ++i) {
      axp_t* member = json_new_string(std::to_string(below(names)).c_str());
      if (talk_t* child = value(members, names, depth)) json_insert_child(member, child);
      json_insert_child(vessel, member);
    }
    return vessel;
  }

  talk_t* value(int members, int names, int depth) {
    const int kind = below(20);
    if (kind == 0) return nullptr;
    if (kind == 1) return json_new_number("1");
    if (kind == 2) return json_new_array();
    if (kind == 3) return VesselCreate();
    if (kind < 10 && depth > 0) return object(below(members) + 1, names, depth - 1);
    return RenderCreate(std::to_string(below(3)).c_str());
  }

  std::mt19937 random_;
};

// Processor seconds of this thread that an action takes.
template <class Action>
double seconds_of(Action action) {
  const auto now = [] {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  const double begin = now();
  action();
  return now() - begin;
}

}  // namespace fairlead_test
