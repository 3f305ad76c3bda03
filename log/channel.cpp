// Opening and closing the log channel.
#include "log/channel.h"

#include <syslog.h>

#include <cstdlib>
#include <cstring>

#include "base/errno_keeper.h"
#include "fairlead/log.h"
#include "fairlead/state/gvalue.h"

namespace {

constexpr uint32_t kDefaultMode = LOG_MODE_SYSLOG;
constexpr uint32_t kDefaultThreshold = 6;

// A setting is read through its reference at every message: a change in the store takes effect at
// once.
struct Setting {
  const char* name;
  uint32_t fallback;
  const void* reference;  // into the value store, or to `own`; null while unknown
  uint32_t own;           // what GlogOpen was given

  void set(uint32_t value) {
    own = value;
    reference = &own;
  }

  void look_up() {
    if (reference) return;
    const fairlead::ErrnoKeeper keep;
    const void* address = GvalueGet(nullptr, name);
    if (address && GvalueSize(nullptr, name) >= static_cast<int>(sizeof own)) reference = address;
  }

  uint32_t read() const {
    if (!reference) return fallback;
    uint32_t value;
    memcpy(&value, reference, sizeof value);  // values in the store are not aligned
    return value;
  }
};

// Set up once by the main program, before threads or children start; not guarded.
struct Channel {
  char* identity;
  char*
      lent;  // what syslog goes on reading; it outlives the identity until syslog gets another one
  Setting mode = {"log_mode", kDefaultMode, nullptr, 0};
  Setting level = {"log_level", kDefaultThreshold, nullptr, 0};

  void drop_identity() {
    if (identity != lent) free(identity);
    identity = nullptr;
  }

  void lend_identity() {
    openlog(identity, 0, LOG_DAEMON);
    if (lent != identity) free(lent);
    lent = identity;
  }
} channel;

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
  if (!ident) return 0;
  char* copy = strdup(ident);  // before the old one goes: it may be the same text
  channel.drop_identity();
  if (!copy) return 0;
  channel.identity = copy;

  if (mode != 0)
    channel.mode.set(mode);
  else
    channel.mode.look_up();
  if (level != 0)
    channel.level.set(level);
  else
    channel.level.look_up();
  if (channel.mode.reference && !(channel.mode.read() & LOG_MODE_SYSLOG)) return 1;
  channel.lend_identity();
  return 1;
}

extern "C" void GlogClose(void) {
  if (channel.mode.reference) closelog();
  channel.drop_identity();
  channel.mode.reference = nullptr;
  channel.level.reference = nullptr;
}
