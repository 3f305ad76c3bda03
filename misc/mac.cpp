// Hardware addresses as text and as numbers.
#include <cerrno>
#include <cstring>

#include "base/ascii.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/network.h"

namespace {

using fairlead::fail;

constexpr size_t kTextSize = 18;
constexpr size_t kSerialSize = 13;
constexpr uint32_t kUpperHalf = 0xffff0000;

uint32_t octet(uint32_t word, int place) { return word >> (8 * place) & 0xff; }

// As "%x" of scanf reads a number, but for one that is too long: that counts modulo 2^32 on
// machines of every width.
bool read_number(const char*& text, uint32_t& number) {
  text += strspn(text, " \t\n\v\f\r");
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  if (!fairlead::is_hex_digit(*text)) return false;
  if (text[0] == '0' && fairlead::to_lower(text[1]) == 'x') text += 2;
  for (number = 0; fairlead::is_hex_digit(*text); ++text)
    number = number * 16 + static_cast<uint32_t>(fairlead::hex_value(*text));
  if (negative) number = 0 - number;
  return true;
}

bool between(uint32_t lower, uint32_t value, uint32_t upper) {
  return lower <= value && value <= upper;
}

}  // namespace

extern "C" int string2mac(const char* text, mac_t* mac) {
  if (!text || !mac) return fail<int>(EINVAL);
  uint32_t field[6];
  for (uint32_t& value : field) {
    if (&value != field && *text++ != ':') return 0;
    if (!read_number(text, value)) return 0;
    value &= 0xff;
  }
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
