// What the kernel tells about an interface: flags and addresses.
#include <arpa/inet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/fail.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::BoundedText;
using fairlead::fail;

// One interface and the socket through which its questions go.
class Interface {
 public:
  explicit Interface(const char* name)
      : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)), name_(name) {}

  explicit operator bool() const { return static_cast<bool>(socket_); }

  bool ask(unsigned long question, ifreq& answer) const {
    answer = {};
    BoundedText(answer.ifr_name, sizeof answer.ifr_name).add(name_);
    return ioctl(socket_.get(), question, &answer) == 0;
  }

  bool tell_address(unsigned long question, char* buffer, int size) const {
    ifreq answer;
    if (!buffer || size < 1 || !ask(question, answer)) return false;
    sockaddr_in address;
    memcpy(&address, &answer.ifr_addr, sizeof address);
    char text[INET_ADDRSTRLEN];
    if (!inet_ntop(AF_INET, &address.sin_addr, text, sizeof text)) return false;
    BoundedText(buffer, static_cast<size_t>(size)).add(text);
    return true;
  }

  bool tell_hardware_address(char* buffer, int size) const {
    ifreq answer;
    if (!buffer || size < 1 || !ask(SIOCGIFHWADDR, answer)) return false;
    unsigned char octet[6];
    memcpy(octet, answer.ifr_hwaddr.sa_data, sizeof octet);
    BoundedText(buffer, static_cast<size_t>(size))
        .format("%2.2X:%2.2X:%2.2X:%2.2X:%2.2X:%2.2X", octet[0], octet[1], octet[2], octet[3],
                octet[4], octet[5]);
    return true;
  }

 private:
  fairlead::Descriptor socket_;
  const char* name_;
};

}  // namespace

extern "C" int netcard_isflags(const char* name, int flags) {
  if (!name || !*name) return fail(EINVAL, -1);
  const Interface interface(name);
  ifreq answer;
  if (!interface || !interface.ask(SIOCGIFFLAGS, answer)) return -1;
  const auto wanted = static_cast<uint16_t>(flags);
  return (static_cast<uint16_t>(answer.ifr_flags) & wanted) == wanted ? 1 : 0;
}

extern "C" int netcard_info(const char* name, char* address, int address_size, char* peer,
                            int peer_size, char* netmask, int netmask_size, char* mac,
                            int mac_size) {
  if (!name || !*name) return fail(EINVAL, -1);
  const Interface interface(name);
  if (!interface) return -1;
  int filled = 0;
  filled += interface.tell_address(SIOCGIFADDR, address, address_size);
  filled += interface.tell_address(SIOCGIFDSTADDR, peer, peer_size);
  filled += interface.tell_address(SIOCGIFNETMASK, netmask, netmask_size);
  filled += interface.tell_hardware_address(mac, mac_size);
  return filled > 0 ? 0 : -1;
}
