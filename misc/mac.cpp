// Hardware addresses as text and as numbers.
#include <cerrno>
#include <cstdio>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::fail;

constexpr size_t kTextSize = 18;
constexpr size_t kSerialSize = 13;
constexpr uint32_t kUpperHalf = 0xffff0000;

uint32_t octet(uint32_t word, int place) { return word >> (8 * place) & 0xff; }

bool between(uint32_t lower, uint32_t value, uint32_t upper) {
  return lower <= value && value <= upper;
}

}  // namespace

extern "C" int string2mac(const char* text, mac_t* mac) {
  if (!text || !mac) return fail<int>(EINVAL);
  unsigned field[6];
  if (sscanf(text, "%x:%x:%x:%x:%x:%x", &field[0], &field[1], &field[2], &field[3], &field[4],
             &field[5]) != 6)
    return 0;
  for (unsigned& value : field) value &= 0xff;
  mac->high = (mac->high & kUpperHalf) | field[0] << 8 | field[1];
  mac->low = field[2] << 24 | field[3] << 16 | field[4] << 8 | field[5];
  return 1;
}

extern "C" int mac2string(const mac_t* mac, char* text) {
  if (!mac || !text) return fail<int>(EINVAL);
  fairlead::BoundedText(text, kTextSize)
      .format("%02X:%02X:%02X:%02X:%02X:%02X", octet(mac->high, 1), octet(mac->high, 0),
              octet(mac->low, 3), octet(mac->low, 2), octet(mac->low, 1), octet(mac->low, 0));
  return 1;
}

extern "C" int mac2serial(const mac_t* mac, char* text) {
  if (!mac || !text) return fail<int>(EINVAL);
  fairlead::BoundedText(text, kSerialSize).format("%04X%08X", mac->high & ~kUpperHalf, mac->low);
  return 1;
}

extern "C" int serial2mac(const char*, mac_t*) { return 0; }

extern "C" uint32_t mac2add(mac_t* mac, uint32_t amount) {
  if (!mac) return fail<uint32_t>(EINVAL);
  const uint32_t before = mac->low;
  mac->low += amount;
  return before;
}

extern "C" int macrang(const mac_t* mac, const mac_t* lower, const mac_t* upper) {
  if (!mac || !lower || !upper) return fail<int>(EINVAL);
  return between(lower->high, mac->high, upper->high) && between(lower->low, mac->low, upper->low);
}
