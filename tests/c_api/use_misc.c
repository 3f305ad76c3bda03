/* use_misc.c - small files, lock files, commands, the network, encoders and clocks. */
#include <fcntl.h>
#include <stdlib.h>

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

static void use_md5(void) {
  md5_t context;
  unsigned char digest[16], again[16];
  md5_init(&context);
  md5_transform(context.state, md5_padding);
  md5_encode(digest, context.state, sizeof digest);
  md5_decode(context.state, digest, sizeof digest);

  md5_init(&context);
  md5_update(&context, 0, 0);
  md5_final(&context, again);
  CHECK(memcmp(digest, again, sizeof digest) == 0);
}

static void use_encoders(void) {
  char text[16];
  unsigned char bytes[2];
  int length = 0;
  CHECK_OWN_TEXT("YWI=", base64_encode("ab"));
  CHECK_OWN_TEXT("YQ==", encode64_block("ab", 1));
  CHECK_OWN_TEXT("ab", base64_decode("YWI="));
  CHECK_OWN_TEXT("ab", decode64_block("YWI", &length, 0));
  CHECK(length == 2);
  CHECK_OWN_TEXT("a+b%2Fc", url_encode("a b/c", 5, &length));
  CHECK(length == 7);
  CHECK_TEXT("a+b", string_copy(text, "a+b%2fc", 4));
  CHECK(url_decode(text, 3) == 3);
  CHECK_TEXT("a b", text);
  lowtoupp(text);
  CHECK_TEXT("A B", text);
  upptolow(text);
  CHECK_TEXT("a b", text);
  CHECK(string2hex("3c7F", bytes, 2) == 2);
  CHECK(bytes[0] == 0x3c && bytes[1] == 0x7f);
  hex2string("<", text, 1);
  CHECK_TEXT("3C", text);
  CHECK(hexstr2int("1f") == 31);
}

static void use_clock(void) {
  char start[32], text[32];
  CHECK(time_getting(text, sizeof text) == text && strlen(text) == 19);
  CHECK(uptime_getting(start, sizeof start) == start);
  CHECK(livetime_getting(text, sizeof text) == text);
  CHECK(uptime_count(start, text, sizeof text) == text && atoi(text) < 600);
  CHECK(livetime_count(start, text, sizeof text) == text && text[2] == ':');
}

void use_misc(void) {
  use_network();
  use_md5();
  use_encoders();
  use_clock();

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
