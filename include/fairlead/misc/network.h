/* network.h - interfaces, hardware addresses, socket options, names, connections, routes.
 *
 * Threads: one thread at a time for dns2ipstring, which changes the SIGALRM handler, the signal
 * mask and the alarm while it waits and may answer in a buffer of the process; all others hold no
 * state. Fork: nothing here is shared with a child.
 * Everything is IPv4. "Dotted" text is four decimal parts, as inet_pton(3) reads them. Descriptors
 * are close-on-exec. Nothing here logs. */
#ifndef FAIRLEAD_MISC_NETWORK_H
#define FAIRLEAD_MISC_NETWORK_H

#include <stdint.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* A hardware address as two numbers in the byte order of the machine. 00:11:22:33:44:55 is
 * high 0x0011, low 0x22334455; the upper half of high means nothing. */
typedef struct mac {
  uint32_t high; /* the first two octets */
  uint32_t low;  /* the last four */
} mac_t;

/* Whether an interface has all of these flags (IFF_UP and so on, the low 16 bits count); flags 0
 * asks whether it exists. A longer name is cut to 15 characters, as the kernel has it.
 * Returns 1 or 0; -1 with errno: EINVAL name null or empty | ENODEV no such interface | as
 * socket(2) leaves it. */
int netcard_isflags(const char* name, int flags);

/* Tells an interface's address, the address of its peer (on an interface that has none, its own
 * address) and its netmask as dotted text, and its hardware address as "00:1A:2B:3C:4D:5E". Each
 * buffer may be null, or its size below 1, when it is not wanted; a text that does not fit is cut.
 * One that can't be told leaves its buffer untouched and keeps none of the others from being told.
 * A longer name is cut to 15 characters.
 * Returns 0 when at least one buffer was filled, else -1 with errno: EINVAL name null or empty | of
 * the last question that failed: ENODEV no such interface, EADDRNOTAVAIL it has no address; errno
 * stays when nothing was wanted. */
int netcard_info(const char* name, char* address, int address_size, char* peer, int peer_size,
                 char* netmask, int netmask_size, char* mac, int mac_size);

/* Tells what has passed through an interface since it came up: bytes, packets, errors and dropped
 * packets, received and sent. Each output may be null. A number that does not fit ends at the
 * limits of int64_t.
 * The interface is the first line of /proc/net/dev, below its two head lines, that contains the
 * name anywhere: "eth1" is found in the line of "eth10" when that comes first, and "7" in any
 * number. Kept as it is for programs that ask with part of a name.
 * Returns 0; -1 with the outputs untouched when no line has the name or the line is damaged, when
 * the file can't be opened (errno as open(2) leaves it), or when name is null or empty (errno
 * EINVAL). */
int netcard_flew(const char* name, int64_t* rx_bytes, int64_t* rx_packets, int64_t* rx_errors,
                 int64_t* rx_drops, int64_t* tx_bytes, int64_t* tx_packets, int64_t* tx_errors,
                 int64_t* tx_drops);

/* Reads six hexadecimal numbers with a ":" between them, of any length; of each the low 8 bits
 * count. What follows them is not looked at. The upper half of mac->high stays as it was.
 * Returns 1; 0 with *mac untouched when there are fewer; 0 with errno EINVAL when text or mac is
 * null. */
int string2mac(const char* text, mac_t* mac);

/* Writes "00:1A:2B:3C:4D:5E" to a buffer of at least 18 bytes (mac2string), or "001A2B3C4D5E" to
 * one of at least 13 (mac2serial). Returns 1, or 0 with errno EINVAL: mac or text null. */
int mac2string(const mac_t* mac, char* text);
int mac2serial(const mac_t* mac, char* text);

/* Does nothing and returns 0: there is no way back from mac2serial. Programs that were built
 * against it must find it. */
int serial2mac(const char* text, mac_t* mac);

/* Adds to the last four octets, which wrap around without a carry into the first two.
 * Returns mac->low as it was before; 0 with errno EINVAL when mac is null. */
uint32_t mac2add(mac_t* mac, uint32_t amount);

/* Whether lower->high <= mac->high <= upper->high and lower->low <= mac->low <= upper->low. The two
 * halves are compared each on its own, so this is not the order of whole addresses: between
 * 00:00:00:00:00:05 and 00:02:00:00:00:09 lies no address that ends in 00:00:00:0A.
 * Returns 1 or 0; 0 with errno EINVAL when an argument is null. */
int macrang(const mac_t* mac, const mac_t* lower, const mac_t* upper);

/* Lets bind(2) take an address that old connections still use (SO_REUSEADDR).
 * Returns 1, or 0 with errno as setsockopt(2) leaves it. */
int socket_reuse(int fd);

/* seconds above 0: a TCP connection that was silent for 300 seconds is asked for a sign of life
 * every so many seconds, and is broken when eight questions in a row got no answer. seconds 0 or
 * below: it is not asked any more.
 * Returns 1; 0 with errno as setsockopt(2) leaves it, which may be after some of the options were
 * set: EOPNOTSUPP no TCP socket | EINVAL seconds above 32767 | EBADF and so on. */
int socket_keepalive(int fd, int seconds);

/* Gives the dotted address of a host. Dotted text is its own answer, without a question to anyone;
 * anything else goes to gethostbyname(3), the first address of the answer counts.
 * buffer: filled with zero bytes up to `size`, then the address, cut to size - 1 characters. Null
 * (or a size below 1): a buffer of 20 bytes of the process, valid until the next call.
 * seconds: how long the answer may take. 0 or below: as long as the resolver tries; an alarm of the
 * caller's that goes off meanwhile then ends the call, and does not reach the caller's handler.
 * The resolver works in a child process that is gone before the call returns, because one that is
 * left in the middle of its work would keep its locks and sockets. SIGCHLD is blocked meanwhile.
 * Returns the buffer. Null when there is no answer (h_errno tells why) or not in time (h_errno
 * TRY_AGAIN), with errno and the buffer untouched; null with errno: EINVAL name null or empty | as
 * pipe(2) or fork(2) leave it. */
char* dns2ipstring(const char* name, char* buffer, int size, int seconds);

/* Opens a TCP connection to a dotted address and a port (the low 16 bits count). Text that is no
 * dotted address counts as 0.0.0.0, which Linux takes for this machine.
 * Each signal that interrupts the wait begins its seconds anew; 0: no wait.
 * Returns the socket, which does not wait in reads and writes (fd_block changes that) and which the
 * caller closes. Else a negative number with errno:
 * -1 no socket, as socket(2) leaves it; EINVAL address null | -2 refused at once, as connect(2)
 * leaves it: ENETUNREACH, ECONNREFUSED | -3 the wait failed: EINVAL seconds below 0 | -4 no answer
 * in time: ETIMEDOUT | -5 refused: ECONNREFUSED, EHOSTUNREACH and so on. */
int tcp_socket_connect(const char* address, int port, int seconds);

/* Looks for a route to exactly this destination in /proc/net/route, "0.0.0.0" being the default
 * route; netmask null: whatever its mask. Routes that are not up do not count.
 * gateway (at least 16 bytes) and interface (at least 16 bytes) may be null; else they tell the
 * dotted gateway, "0.0.0.0" when there is none, and the name of the interface. Among several
 * routes it is the one with the highest metric, which is the one that the kernel likes least, and
 * the first of equal ones. Kept for programs that count on it.
 * A damaged line ends the search. The kernel shows a metric above 2147483647 as a negative number;
 * such a route is not found.
 * Returns 1; 0 with the outputs untouched when there is none, when the table can't be opened (errno
 * as open(2) leaves it), or when destination is null (errno EINVAL). */
int route_exist(const char* destination, const char* netmask, char* gateway, char* interface);

FAIRLEAD_API_END

#endif
