// A TCP connection, with a limit on the wait for the other side.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <ctime>

#include "base/descriptor.h"
#include "base/fail.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::Descriptor;
using fairlead::fail;

enum Failure { kNoSocket = -1, kRefusedAtOnce = -2, kNoWait = -3, kNoAnswer = -4, kRefused = -5 };

sockaddr_in endpoint(const char* address, int port) {
  sockaddr_in end = {};
  end.sin_family = AF_INET;
  end.sin_port = htons(static_cast<uint16_t>(port));
  inet_pton(AF_INET, address, &end.sin_addr);
  return end;
}

// As ppoll: above 0 when there is something to learn, 0 when the time is over. A bitmap as select
// takes it would have no room for a descriptor above 1023.
int wait_for_answer(int fd, int seconds) {
  const timespec limit = {seconds, 0};
  pollfd wanted = {fd, POLLIN | POLLOUT, 0};
  int ready;
  do {
    ready = ppoll(&wanted, 1, &limit, nullptr);
  } while (ready < 0 && errno == EINTR);
  return ready;
}

int pending_error(int fd) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

}  // namespace

extern "C" int tcp_socket_connect(const char* address, int port, int seconds) {
  if (!address) return fail<int>(EINVAL, kNoSocket);
  const sockaddr_in end = endpoint(address, port);
  Descriptor connection(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!connection) return kNoSocket;
  if (connect(connection.get(), reinterpret_cast<const sockaddr*>(&end), sizeof end) == 0)
    return connection.release();
  if (errno != EAGAIN && errno != EINPROGRESS) return kRefusedAtOnce;

  const int ready = wait_for_answer(connection.get(), seconds);
  if (ready < 0) return kNoWait;
  if (ready == 0) return fail<int>(ETIMEDOUT, kNoAnswer);
  const int error = pending_error(connection.get());
  return error == 0 ? connection.release() : fail<int>(error, kRefused);
}
