// The traffic counters of an interface.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/fail.h"
#include "base/stream.h"
#include "fairlead/misc/network.h"

namespace {

constexpr size_t kLineSize = 4095;
constexpr int kHeadLines = 2;

// Received bytes, packets, errors, drops, four that nobody asks for, and the same four of what was
// sent.
using Counters = std::array<int64_t, 12>;
constexpr size_t kReceived = 0;
constexpr size_t kSent = 8;

bool find_line(FILE* table, const char* name, char (&line)[kLineSize]) {
  for (int number = 0; fgets(line, sizeof line, table); ++number)
    if (number >= kHeadLines && strstr(line, name)) return true;
  return false;
}

bool read_counters(const char* line, Counters& counters) {
  const char* colon = strchr(line, ':');
  if (!colon) return false;
  const char* from = colon + 1;
  for (int64_t& counter : counters) {
    char* end = nullptr;
    counter = strtoll(from, &end, 10);
    if (end == from) return false;
    from = end;
  }
  return true;
}

void tell(const Counters& counters, size_t first, std::array<int64_t*, 4> outputs) {
  for (size_t i = 0; i < outputs.size(); ++i)
    if (outputs[i]) *outputs[i] = counters[first + i];
}

}  // namespace

extern "C" int netcard_flew(const char* name, int64_t* rx_bytes, int64_t* rx_packets,
                            int64_t* rx_errors, int64_t* rx_drops, int64_t* tx_bytes,
                            int64_t* tx_packets, int64_t* tx_errors, int64_t* tx_drops) {
  if (!name || !*name) return fairlead::fail(EINVAL, -1);
  const fairlead::Stream table = fairlead::open_stream("/proc/net/dev");
  if (!table) return -1;
  char line[kLineSize];
  Counters counters;
  if (!find_line(table.get(), name, line) || !read_counters(line, counters)) return -1;
  tell(counters, kReceived, {rx_bytes, rx_packets, rx_errors, rx_drops});
  tell(counters, kSent, {tx_bytes, tx_packets, tx_errors, tx_drops});
  return 0;
}
