#include "documents.h"

#include <cstdlib>

namespace bench {

namespace {

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

// One interface of a router, as a configuration holds it.
std::string interface(size_t number) {
  const std::string n = std::to_string(number);
  return "{\"status\":\"enable\",\"mode\":\"dhcp\",\"ifname\":\"eth0." + n +
         "\",\"mtu\":\"1500\",\"static\":{\"ip\":\"192.168." + std::to_string(number % 256) +
         ".1\",\"mask\":\"255.255.255.0\",\"gateway\":\"192.168.0.254\"},\"dns\":{\"primary\":"
         "\"8.8.8.8\",\"secondary\":\"8.8.4.4\"},\"masq\":\"disable\",\"comment\":\"uplink " +
         n + "\"}";
}

}  // namespace

std::string configuration(size_t size) {
  std::string text = "{";
  for (size_t number = 0; text.size() + 100 < size; ++number) {
    if (number) text += ',';
    text += quoted("interface" + std::to_string(number)) + ':' + interface(number);
  }
  return text + "}";
}

std::string deep(size_t levels) {
  std::string text;
  for (size_t level = 0; level < levels; ++level) text += "{\"level\":";
  text += "\"bottom\"";
  return text + std::string(levels, '}');
}

std::string wide(size_t members) {
  std::string text = "{";
  for (size_t number = 0; number < members; ++number)
    text += (number ? "," : "") + quoted("member" + std::to_string(number)) + ":" +
            quoted(std::to_string(number * 7));
  return text + "}";
}

std::string long_strings(size_t count, size_t length) {
  std::string text = "{";
  for (size_t number = 0; number < count; ++number)
    text += (number ? "," : "") + quoted("text" + std::to_string(number)) + ":" +
            quoted(std::string(length, 'a'));
  return text + "}";
}

const std::vector<Document>& documents() {
  static const std::vector<Document> all = {
      {"configuration_400B", configuration(400)},
      {"configuration_4KB", configuration(4 << 10)},
      {"configuration_100KB", configuration(100 << 10)},
      {"configuration_10MB", configuration(10 << 20)},
      {"long_strings", long_strings(25, 4096)},
      {"deep_800", deep(800)},
      {"wide_2000", wide(2000)},
  };
  return all;
}

const std::string& document(const std::string& name) {
  for (const Document& each : documents())
    if (each.name == name) return each.text;
  abort();
}

}  // namespace bench
