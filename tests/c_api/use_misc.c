/* use_misc.c - small files, lock files, commands and the network. */
#include <fcntl.h>

#include "check.h"
#include "fairlead/misc.h"

static void use_network(void) {
  mac_t mac = {0, 0};
  char text[20], peer[16], mask[16], card[18];
  int64_t bytes;
  CHECK(string2mac("00:1a:2b:3c:4d:ff", &mac) == 1);
  CHECK(mac2add(&mac, 1) == 0x2b3c4dff);
  CHECK(mac2string(&mac, text) == 1);
  CHECK_TEXT("00:1A:2B:3C:4E:00", text);
  CHECK(mac2serial(&mac, text) == 1);
  CHECK_TEXT("001A2B3C4E00", text);
  CHECK(serial2mac(text, &mac) == 0);
  CHECK(macrang(&mac, &mac, &mac) == 1);

  CHECK(netcard_isflags("lo", 0) == 1);
  CHECK(netcard_info("lo", text, sizeof text, peer, sizeof peer, mask, sizeof mask, card,
                     sizeof card) == 0);
  CHECK_TEXT("00:00:00:00:00:00", card);
  CHECK(netcard_flew("lo", &bytes, 0, 0, 0, 0, 0, 0, 0) == 0);
  CHECK(route_exist("192.0.2.0", "255.255.255.255", 0, 0) == 0);

  CHECK_TEXT("192.0.2.1", dns2ipstring("192.0.2.1", text, sizeof text, 1));
  CHECK(tcp_socket_connect("127.0.0.1", 0, 1) < 0);
  CHECK(socket_reuse(-1) == 0);
  CHECK(socket_keepalive(-1, 30) == 0);
}

void use_misc(void) {
  use_network();

  char text[16];
  CHECK(write_string("/tmp/small", "%d items", 3) > 0);
  CHECK_TEXT("3 items", read_string("/tmp/small", text, sizeof text));
  CHECK(file_copy("/tmp/small", "/tmp/copy") == 7);
  CHECK(file_cmp("/tmp/small", "/tmp/copy") == 0);

  const int lock = lock_open("/tmp/lock", O_RDWR | O_CREAT, 0600, 1);
  CHECK(lock >= 0);
  CHECK(lock_close(lock) == 0);

  CHECK(system_string("exit %d", 3) == 3 << 8);
}
