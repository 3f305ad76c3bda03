// The log settings that all processes share, and messages.
#include "fairlead/log.h"

#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "fairlead/state/gvalue.h"
#include "tools/fairlead/apart.h"
#include "tools/fairlead/options.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

constexpr const char* kLevels[] = {"unknown", "emerg",  "alert", "error",
                                   "warn",    "notice", "info",  "debug"};
constexpr uint32_t kDefaultLevel = 6;

struct Mode {
  const char* name;
  uint32_t bit;
};
constexpr Mode kModes[] = {
    {"syslog", LOG_MODE_SYSLOG}, {"console", LOG_MODE_CONSOLE}, {"where", LOG_MODE_WHERE}};

constexpr char kLevelValue[] = "log_level";
constexpr char kModeValue[] = "log_mode";

uint32_t stored(const char* name, uint32_t otherwise) {
  uint32_t word = 0;
  const void* bytes = GvalueSize(nullptr, name) == static_cast<int>(sizeof word)
                          ? GvalueGet(nullptr, name)
                          : nullptr;
  if (!bytes) return otherwise;
  memcpy(&word, bytes, sizeof word);
  return word ? word : otherwise;
}

Exit store(const Call& call, const char* name, uint32_t word) {
  if (GvalueSet(nullptr, name, &word, sizeof word) == 1) return done(call);
  return fail_because(errno, "the log settings cannot be changed");
}

// False when it is no level's name.
bool find_level(const char* name, uint32_t& level) {
  for (level = 1; level < std::size(kLevels); ++level)
    if (strcmp(kLevels[level], name) == 0) return true;
  return false;
}

Exit refuse_level(const char* name) {
  return refuse("'%s' is no level: emerg alert error warn notice info debug", name);
}

}  // namespace

Exit log_level(const Call& call) {
  const char* name = call.argument(0);
  if (!name)
    return show_text(call, "level",
                     kLevels[stored(kLevelValue, kDefaultLevel) % std::size(kLevels)]);
  uint32_t level = 0;
  if (!find_level(name, level)) return refuse_level(name);
  return store(call, kLevelValue, level);
}

Exit log_mode(const Call& call) {
  uint32_t word = 0;
  for (const char* name : call.arguments) {
    const auto* mode = std::begin(kModes);
    while (mode != std::end(kModes) && strcmp(mode->name, name) != 0) ++mode;
    if (mode == std::end(kModes)) return refuse("'%s' is no mode: syslog console where", name);
    word |= mode->bit;
  }
  if (word) return store(call, kModeValue, word);
  word = stored(kModeValue, LOG_MODE_SYSLOG);
  fairlead::FixedText<64> names;
  for (const Mode& mode : kModes)
    if (word & mode.bit) names.add(names.length() ? " " : "").add(mode.name);
  return show_text(call, "mode", names.text());
}

Exit log_write(const Call& call) {
  uint32_t level = 0;
  if (!find_level(call.argument(0), level)) return refuse_level(call.argument(0));
  {
    const OutputApart apart(call);
    LogWrite(level, "fairlead", __LINE__, "%s", call.argument(1));
  }
  return done(call);
}

}  // namespace control
