// The kernel's IPv4 routing table.
#include <arpa/inet.h>
#include <net/if.h>
#include <net/route.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/stream.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::BoundedText;

constexpr size_t kLineSize = 1023;

struct Route {
  char interface[IFNAMSIZ + 1];  // one more than a name takes, to tell one that is too long
  uint32_t destination, gateway;
  unsigned flags;
  int metric;
  uint32_t mask;
};

struct Dotted {
  explicit Dotted(uint32_t address) { inet_ntop(AF_INET, &address, text, sizeof text); }
  bool is(const char* other) const { return strcmp(text, other) == 0; }
  char text[INET_ADDRSTRLEN];
};

bool read_route(const char* line, Route& route) {
  int references, uses;
  return sscanf(line, "%16s %x %x %x %d %d %d %x", route.interface, &route.destination,
                &route.gateway, &route.flags, &references, &uses, &route.metric,
                &route.mask) == 8 &&
         strlen(route.interface) < IFNAMSIZ;
}

// The matching route with the highest metric, the first among equals: device software has come to
// rely on this choice.
bool find_route(FILE* table, const char* destination, const char* netmask, Route& found) {
  char line[kLineSize];
  Route route;
  found.metric = -1;
  if (!fgets(line, sizeof line, table)) return false;  // the head line
  while (fgets(line, sizeof line, table) && read_route(line, route)) {
    if (!(route.flags & RTF_UP) || route.metric <= found.metric) continue;
    if (netmask && !Dotted(route.mask).is(netmask)) continue;
    if (Dotted(route.destination).is(destination)) found = route;
  }
  return found.metric >= 0;
}

}  // namespace

extern "C" int route_exist(const char* destination, const char* netmask, char* gateway,
                           char* interface) {
  if (!destination) return fairlead::fail<int>(EINVAL);
  const fairlead::Stream table = fairlead::open_stream("/proc/net/route");
  if (!table) return 0;
  Route route;
  if (!find_route(table.get(), destination, netmask, route)) return 0;
  if (gateway) BoundedText(gateway, INET_ADDRSTRLEN).add(Dotted(route.gateway).text);
  if (interface) BoundedText(interface, IFNAMSIZ).add(route.interface);
  return 1;
}
