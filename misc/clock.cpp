// The time of day and the time since boot, as text.
#include "fairlead/misc/clock.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/files.h"
#include "fairlead/misc/process.h"

namespace {

using fairlead::BoundedText;
using fairlead::fail;

constexpr char kNow[] = "/tmp/.now";
constexpr char kUptime[] = "/proc/uptime";
constexpr char kBoot[] = "0";  // where the time since boot starts
constexpr uint32_t kDay = 86400;

bool usable(const char* buffer, int size) { return buffer && size > 0; }

// Modulo 2^32 on machines of every width.
uint32_t to_seconds(const char* text) { return static_cast<uint32_t>(strtoull(text, nullptr, 10)); }

std::optional<uint32_t> read_uptime() {
  char text[64] = {};
  if (!read_string(kUptime, text, sizeof text)) return std::nullopt;
  char* const point = strchr(text, '.');
  if (!point) return std::nullopt;
  *point = '\0';
  return to_seconds(text);
}

char* put_seconds(uint32_t seconds, char* buffer, int size) {
  return BoundedText(buffer, static_cast<size_t>(size)).format("%u", seconds).text();
}

char* put_days(uint32_t seconds, char* buffer, int size) {
  return BoundedText(buffer, static_cast<size_t>(size))
      .format("%02u:%02u:%02u:%u", seconds % kDay / 3600, seconds % 3600 / 60, seconds % 60,
              seconds / kDay)
      .text();
}

// Everyone may put something there: the shell would write through a link, and wait at a FIFO for a
// reader.
void remove_what_is_no_plain_file(const char* path) {
  struct stat status;
  if (lstat(path, &status) == 0 && (!S_ISREG(status.st_mode) || status.st_nlink > 1)) unlink(path);
}

// What the four forms of the uptime do alike.
char* put_uptime(const char* start, char* buffer, int size, char* (*put)(uint32_t, char*, int)) {
  if (!start || !usable(buffer, size)) return fail<char*>(EINVAL);
  const auto now = read_uptime();
  return now ? put(*now - to_seconds(start), buffer, size) : nullptr;
}

}  // namespace

extern "C" {

char* time_getting(char* buffer, int size) {
  if (!usable(buffer, size)) return fail<char*>(EINVAL);
  remove_what_is_no_plain_file(kNow);
  if (system_string("date +%%H:%%M:%%S:%%m:%%d:%%Y>%s 2>/dev/null", kNow) != 0) return nullptr;
  if (!read_string(kNow, buffer, size)) return nullptr;
  const size_t length = strlen(buffer);
  if (length > 0) buffer[length - 1] = '\0';  // the end of the line
  return buffer;
}

char* uptime_getting(char* buffer, int size) {
  return put_uptime(kBoot, buffer, size, put_seconds);
}

char* livetime_getting(char* buffer, int size) { return put_uptime(kBoot, buffer, size, put_days); }

char* uptime_count(const char* start, char* buffer, int size) {
  return put_uptime(start, buffer, size, put_seconds);
}

char* livetime_count(const char* start, char* buffer, int size) {
  return put_uptime(start, buffer, size, put_days);
}

}  // extern "C"
