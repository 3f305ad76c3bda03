// Options that daemons set on their sockets.
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "fairlead/misc/network.h"

namespace {

constexpr int kSilentSeconds = 300;
constexpr int kQuestions = 8;

bool set_option(int fd, int level, int option, int value) {
  return setsockopt(fd, level, option, &value, sizeof value) == 0;
}

}  // namespace

extern "C" int socket_reuse(int fd) { return set_option(fd, SOL_SOCKET, SO_REUSEADDR, 1) ? 1 : 0; }

extern "C" int socket_keepalive(int fd, int seconds) {
  if (seconds <= 0) return set_option(fd, SOL_SOCKET, SO_KEEPALIVE, 0) ? 1 : 0;
  // Switched on last: it never runs with the system's own times, which are hours.
  return set_option(fd, IPPROTO_TCP, TCP_KEEPIDLE, kSilentSeconds) &&
                 set_option(fd, IPPROTO_TCP, TCP_KEEPINTVL, seconds) &&
                 set_option(fd, IPPROTO_TCP, TCP_KEEPCNT, kQuestions) &&
                 set_option(fd, SOL_SOCKET, SO_KEEPALIVE, 1)
             ? 1
             : 0;
}
