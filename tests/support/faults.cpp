// Keeps the armed plans and counts the calls.
#include "support/faults.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace fairlead_test {

// Where the allocator's stand-ins are. Without a reference the linker would leave them out where a
// sanitizer's library offers malloc first.
void use_malloc_stand_ins();

namespace {

constexpr int kCalls = static_cast<int>(Call::kAny) + 1;

struct Slot {
  std::atomic<bool> armed;
  FaultPlan plan;
  std::atomic<int> calls;
};

// One armed plan per kind, for the whole process: the calls it meets come from any thread.
Slot slots[kCalls];

// Seen by children and parent alike, so that a fault in a child counts as fired.
std::atomic<bool>* shared_flags() {
  static std::atomic<bool>* const flags = static_cast<std::atomic<bool>*>(
      mmap(nullptr, kCalls, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  return flags;
}

Slot& slot_of(Call call) { return slots[static_cast<int>(call)]; }

std::atomic<bool>& flag_of(Call call) { return shared_flags()[static_cast<int>(call)]; }

// True when this call is one of those the plan means.
bool met(Call call) {
  Slot& slot = slot_of(call);
  if (!slot.armed.load()) return false;
  const int number = ++slot.calls;
  const FaultPlan& plan = slot.plan;
  if (plan.nth < 1 || number < plan.nth || number - plan.nth >= plan.times) return false;
  flag_of(call).store(true);
  return true;
}

Verdict strike(const FaultPlan& plan) {
  const int saved = errno;
  if (plan.signal) kill(getpid(), plan.signal);
  errno = plan.error ? plan.error : saved;
  return {plan.error != 0, plan.at_most};
}

}  // namespace

Verdict judge(Call call) {
  if (met(call)) return strike(slot_of(call).plan);
  if (call != Call::kMalloc && met(Call::kAny)) return strike(slot_of(Call::kAny).plan);
  return {};
}

Fault::Fault(Call call, FaultPlan plan) : call_(call) {
  use_malloc_stand_ins();
  Slot& slot = slot_of(call);
  if (slot.armed) {
    fprintf(stderr, "a fault is armed already for this kind of call\n");
    abort();
  }
  flag_of(call) = false;
  slot.plan = plan;
  slot.calls = 0;
  slot.armed = true;
}

void Fault::disarm() {
  if (!armed_) return;
  fired_ = fired();
  calls_ = calls();
  slot_of(call_).armed = false;
  armed_ = false;
}

void disarm_all_faults() {
  for (Slot& slot : slots) slot.armed = false;
}

bool Fault::fired() const { return armed_ ? flag_of(call_).load() : fired_; }

int Fault::calls() const { return armed_ ? slot_of(call_).calls.load() : calls_; }

}  // namespace fairlead_test
