// What the tests of whole-document operations share: large, deep and random documents, and a clock.
#pragma once

#include <algorithm>
#include <ctime>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

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

// Pairs of documents whose members mostly come in the same order: names that ascend or are mixed,
// and in each of the two perhaps a member that was moved, removed, doubled, renamed or given
// another value.
class AlikeDocuments {
 public:
  explicit AlikeDocuments(unsigned seed) : random_(seed) {}

  std::pair<OwnedTalk, OwnedTalk> next(int members, bool ascending) {
    OwnedTalk one(object(members, ascending, 1));
    if (below(2)) change(one.get());
    OwnedTalk other(VesselDup(one.get()));
    if (below(2)) change(other.get());
    return {std::move(one), std::move(other)};
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<>(0, limit - 1)(random_); }

  talk_t* object(int members, bool ascending, int depth) {
    std::vector<int> names(static_cast<size_t>(members));
    std::iota(names.begin(), names.end(), 95);
    if (!ascending) std::shuffle(names.begin(), names.end(), random_);
    talk_t* vessel = VesselCreate();
    for (int name : names) {
      talk_t* value = depth > 0 && below(8) == 0 ? object(members, below(2) == 0, depth - 1)
                                                 : RenderCreate("x");
      VesselAdd(vessel, AxpCreate(("name" + std::to_string(name)).c_str(), value));
    }
    return vessel;
  }

  void change(talk_t* vessel) {
    axp_t* member = VesselEach(vessel, nullptr);
    for (int i = below(VesselCount(vessel)); i > 0; --i) member = VesselEach(vessel, member);
    if (VesselCheck(AxpGetX(member)) && below(3)) return change(AxpGetX(member));
    switch (below(5)) {
      case 0:
        VesselAdd(vessel, VesselSplit(vessel, member));
        break;
      case 1:
        VesselDelete(vessel, member);
        break;
      case 2:
        VesselAdd(vessel, AxpCreate(AxpGet(member), RenderCreate(below(2) ? "x" : "y")));
        break;
      case 3:
        AxpSet(member, (AxpGet(member) + std::string(40, 'n')).c_str());
        break;
      default:
        AxpSetS(member, below(2) ? "y" : "a text that is longer than the one before");
    }
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
