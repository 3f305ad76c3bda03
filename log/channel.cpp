// Opening and closing the log channel, and where its settings are read.
#include "log/channel.h"

#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/errno_keeper.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/log.h"
#include "fairlead/state/gvalue.h"
#include "state/gvalue_store.h"

namespace {

constexpr uint32_t kDefaultMode = LOG_MODE_SYSLOG;
constexpr uint32_t kDefaultThreshold = 6;

// Written by other processes at the same time.
int32_t load(const int32_t& shared) { return __atomic_load_n(&shared, __ATOMIC_ACQUIRE); }

// Found by several threads at the same time, all of them the same.
template <class T>
T found(const T& shared) {
  return __atomic_load_n(&shared, __ATOMIC_ACQUIRE);
}
template <class T>
void note(T& shared, T value) {
  __atomic_store_n(&shared, value, __ATOMIC_RELEASE);
}

// Read through its reference at every message, never copied: a change in the value store takes
// effect at once.
struct Setting {
  const char* name;
  uint32_t fallback;
  const void* reference;       // into the value store, or to `own`; null while unknown
  uint32_t own;                // what GlogOpen was given
  const int32_t* store_count;  // in the value store, once it is open
  int32_t missing_at;          // what it was when the store had no such value

  void set(uint32_t value) {
    own = value;
    reference = &own;
  }

  // Repeated at every message until the store has the value. A store that has as many values as
  // before is not searched: it has no new name. That brings a filtered message from 29 ns to 5.
  void look_up() {
    if (found(reference)) return;
    const int32_t* count = found(store_count);
    if (!count || load(*count) != found(missing_at)) search();
  }

  // Apart, so that the usual way saves no registers.
  [[gnu::noinline]] void search() {
    const fairlead::ErrnoKeeper keep;
    const int32_t* count = fairlead::default_store_count();
    const int32_t now = count ? load(*count) : 0;
    // In this order: a value that grows in between is then read in its new place.
    const int size = GvalueSize(nullptr, name);
    const void* address = GvalueGet(nullptr, name);
    note(missing_at, address ? -1 : now);
    note(store_count, count);
    if (size >= static_cast<int>(sizeof own)) note(reference, address);
  }

  void set_or_look_up(uint32_t given) {
    if (given != 0)
      set(given);
    else
      look_up();
  }

  uint32_t read() const {
    const void* address = found(reference);
    if (!address) return fallback;
    uint32_t value;
    memcpy(&value, address, sizeof value);  // values in the store are not aligned
    return value;
  }
};

struct Channel {
  Setting mode, level;
  char* identity;
  char* lent;  // syslog goes on reading the identity it was opened with, until it gets another one
};

// Set up once by the main program, before threads or children start; not guarded but for what each
// message looks up.
constinit Channel channel = {{"log_mode", kDefaultMode, nullptr, 0, nullptr, 0},
                             {"log_level", kDefaultThreshold, nullptr, 0, nullptr, 0},
                             nullptr,
                             nullptr};

void drop_identity() {
  if (channel.identity != channel.lent) free(channel.identity);
  channel.identity = nullptr;
}

void lend_identity() {
  openlog(channel.identity, 0, LOG_DAEMON);
  if (channel.lent != channel.identity) free(channel.lent);
  channel.lent = channel.identity;
}

bool goes_to_syslog() {
  return !channel.mode.reference || (channel.mode.read() & LOG_MODE_SYSLOG) != 0;
}

}  // namespace

uint32_t fairlead::channel_mode() {
  channel.mode.look_up();
  return channel.mode.read();
}

uint32_t fairlead::channel_threshold() {
  channel.level.look_up();
  return channel.level.read();
}

extern "C" int GlogOpen(const char* ident, uint32_t mode, uint32_t level) {
  if (!ident) return fairlead::fail<int>(EINVAL);
  fairlead::OwnedText copy(strdup(ident));
  drop_identity();
  if (!copy) return 0;
  channel.identity = copy.release();
  channel.mode.set_or_look_up(mode);
  channel.level.set_or_look_up(level);
  if (goes_to_syslog()) lend_identity();
  return 1;
}

extern "C" void GlogClose(void) {
  if (channel.mode.reference) closelog();
  drop_identity();
  channel.mode.reference = nullptr;
  channel.level.reference = nullptr;
}
