// Facts of the machine's network.
#include <net/if.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "fairlead/misc/network.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/options.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

using fairlead::OwnedTalk;

constexpr int kTextSize = 64;

struct Flag {
  const char* name;
  int bit;
};
constexpr Flag kFlags[] = {{"up", IFF_UP},
                           {"running", IFF_RUNNING},
                           {"broadcast", IFF_BROADCAST},
                           {"loopback", IFF_LOOPBACK},
                           {"point-to-point", IFF_POINTOPOINT},
                           {"multicast", IFF_MULTICAST}};

Exit no_interface(const Call& call) {
  return nothing("there is no interface '%s'", call.argument(0));
}

// Only what there is.
bool add_found(vessel_t* facts, const char* name, const char* text) {
  return *text == '\0' || add_text(facts, name, text);
}

Exit no_address(const Call& call) {
  return nothing("'%s' has no address, or nobody who knows it answers", call.argument(0));
}

// Whether another interface's name ends with this one.
bool is_end_of_another(const char* name) {
  const size_t length = strlen(name);
  struct if_nameindex* all = if_nameindex();
  bool found = false;
  for (const struct if_nameindex* other = all; other && other->if_name; ++other) {
    const size_t longer = strlen(other->if_name);
    found |= longer > length && strcmp(other->if_name + longer - length, name) == 0;
  }
  if (all) if_freenameindex(all);
  return found;
}

const char* reason(int result) {
  switch (result) {
    case -4:
      return "no answer in time";
    case -5:
      return "refused or unreachable";
    default:
      return "the connection failed";
  }
}

}  // namespace

Exit net_info(const Call& call) {
  const char* name = call.argument(0);
  if (netcard_isflags(name, 0) < 0) return no_interface(call);
  char address[kTextSize] = "", peer[kTextSize] = "", netmask[kTextSize] = "", mac[kTextSize] = "";
  netcard_info(name, address, kTextSize, peer, kTextSize, netmask, kTextSize, mac, kTextSize);
  fairlead::FixedText<128> flags;
  for (const Flag& flag : kFlags)
    if (netcard_isflags(name, flag.bit) == 1) flags.add(flags.length() ? " " : "").add(flag.name);
  const bool point_to_point = netcard_isflags(name, IFF_POINTOPOINT) == 1;

  const OwnedTalk facts(VesselCreate());
  if (!facts || !add_text(facts.get(), "interface", name) ||
      !add_found(facts.get(), "flags", flags.text()) ||
      !add_found(facts.get(), "address", address) ||
      (point_to_point && !add_found(facts.get(), "peer", peer)) ||
      !add_found(facts.get(), "netmask", netmask) || !add_found(facts.get(), "mac", mac))
    return fail("out of memory");
  return show(call, facts.get());
}

Exit net_counters(const Call& call) {
  constexpr const char* kNames[] = {"received_bytes", "received_packets", "receive_errors",
                                    "receive_drops",  "sent_bytes",       "sent_packets",
                                    "send_errors",    "send_drops"};
  if (netcard_isflags(call.argument(0), 0) < 0) return no_interface(call);
  // The library takes the first line that contains the text. A line is "NAME:", with blanks before
  // a name of less than six characters.
  const char* name = call.argument(0);
  fairlead::FixedText<IFNAMSIZ + 2> line;
  line.add(strlen(name) < 6 ? " " : "").add(name).add(':');
  if (strlen(name) >= 6 && is_end_of_another(name))
    return fail("'%s' cannot be told from an interface whose name ends so", name);
  int64_t counters[8] = {};
  if (netcard_flew(line.text(), &counters[0], &counters[1], &counters[2], &counters[3],
                   &counters[4], &counters[5], &counters[6], &counters[7]) != 0)
    return no_interface(call);
  const OwnedTalk facts(VesselCreate());
  if (!facts) return fail("out of memory");
  for (size_t i = 0; i < std::size(counters); ++i) {
    fairlead::FixedText<32> text;
    text.format("%lld", static_cast<long long>(counters[i]));
    if (!add_text(facts.get(), kNames[i], text.text())) return fail("out of memory");
  }
  return show(call, facts.get());
}

Exit net_route(const Call& call) {
  char gateway[kTextSize] = "", interface[kTextSize] = "";
  if (route_exist(call.argument(0), call.argument(1), gateway, interface) != 1)
    return nothing("there is no route to %s", call.argument(0));
  const OwnedTalk facts(VesselCreate());
  if (!facts || !add_text(facts.get(), "gateway", gateway) ||
      !add_text(facts.get(), "interface", interface))
    return fail("out of memory");
  return show(call, facts.get());
}

Exit net_resolve(const Call& call) {
  char address[kTextSize];
  if (!dns2ipstring(call.argument(0), address, sizeof address, call.options.timeout))
    return no_address(call);
  return show_text(call, "address", address);
}

Exit net_connect(const Call& call) {
  long port = 0;
  if (!read_number(call.argument(1), 1, 65535, port))
    return refuse("'%s' is no port from 1 to 65535", call.argument(1));
  // What is no dotted address would count as this machine.
  char address[kTextSize];
  if (!dns2ipstring(call.argument(0), address, sizeof address, call.options.timeout))
    return no_address(call);
  const int result = tcp_socket_connect(address, static_cast<int>(port), call.options.timeout);
  const fairlead::Descriptor socket(result);
  if (socket) return done(call);
  return fail("%s port %ld: %s", call.argument(0), port, reason(result));
}

Exit net_mac(const Call& call) {
  mac_t mac = {};
  if (string2mac(call.argument(0), &mac) != 1)
    return refuse("'%s' is no hardware address such as 00:11:22:33:44:55", call.argument(0));
  if (call.argument(1)) {
    long amount = 0;
    if (!read_number(call.argument(1), INT_MIN, INT_MAX, amount))
      return refuse("'%s' is no amount", call.argument(1));
    mac2add(&mac, static_cast<uint32_t>(amount));
  }
  char text[kTextSize], serial[kTextSize];
  mac2string(&mac, text);
  mac2serial(&mac, serial);
  const OwnedTalk facts(VesselCreate());
  if (!facts || !add_text(facts.get(), "mac", text) || !add_text(facts.get(), "serial", serial))
    return fail("out of memory");
  return show(call, facts.get());
}

}  // namespace control
