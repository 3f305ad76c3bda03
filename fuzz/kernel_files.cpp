// The files of the kernel that are read as text: a first line with a name, then which file, then
// its content. The readers tell what a plain reading finds, and write nowhere else.
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <sstream>

#include "fairlead/misc.h"
#include "fuzzing.h"

namespace {

using fuzzing::put_file;
using Lines = std::vector<std::string>;

// A folder in place of "/proc" that holds the process' own entries, for the sanitizer, and else
// only what the test writes.
void replace_proc() {
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) fuzzing::skip("no namespaces here");
    put_file("/proc/self/setgroups", "deny");
    put_file("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    put_file("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
  }
  put_file("/tmp/proc/placeholder", "");
  put_file("/tmp/self/placeholder", "");
  const bool done = mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    mount("/proc/self", "/tmp/self", nullptr, MS_BIND | MS_REC, nullptr) == 0 &&
                    mount("none", "/proc", "tmpfs", 0, nullptr) == 0;
  if (!done) fuzzing::skip("no mounts here");
  for (const std::string& own : {std::string("self"), std::to_string(getpid())}) {
    put_file("/proc/" + own + "/placeholder", "");
    if (mount("/tmp/self", ("/proc/" + own).c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
      fuzzing::skip("no mounts here");
  }
}

// As a reader with a buffer of so many bytes gets them; what follows a NUL is not seen.
Lines lines_of(const std::string& content, size_t buffer) {
  Lines lines;
  for (size_t at = 0; at < content.size();) {
    const size_t end = std::min(content.find('\n', at), content.size() - 1) + 1;
    const std::string line = content.substr(at, std::min(end - at, buffer - 1));
    at += line.size();
    lines.push_back(line.c_str());
  }
  return lines;
}

// Bytes that must be as they were behind what a reader may write.
template <size_t N>
class Guarded {
 public:
  Guarded() { memset(bytes_, kMark, sizeof bytes_); }
  ~Guarded() {
    for (size_t i = N; i < sizeof bytes_; ++i) REQUIRE(bytes_[i] == kMark);
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  char* get() { return bytes_; }
  bool untouched() const { return bytes_[0] == kMark; }
  bool ended() const { return memchr(bytes_, '\0', N) != nullptr; }

 private:
  static constexpr char kMark = 0x5a;
  char bytes_[N + 16];
};

// A number of any length, within the limits of its type; what follows it stays in the text.
std::optional<int64_t> take_number(std::string& text) {
  const size_t begin = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const size_t digits = begin + (begin < text.size() && strchr("+-", text[begin]) ? 1 : 0);
  const size_t end = std::min(text.find_first_not_of("0123456789", digits), text.size());
  if (end == digits) return {};
  const bool negative = text[begin] == '-';
  int64_t number = 0;
  bool fits = true;
  for (size_t i = digits; i < end && fits; ++i) {
    const int digit = text[i] - '0';
    fits = !__builtin_mul_overflow(number, 10, &number) &&
           !__builtin_add_overflow(number, negative ? -digit : digit, &number);
  }
  text.erase(0, end);
  if (fits) return number;
  return negative ? INT64_MIN : INT64_MAX;
}

using Counters = std::vector<int64_t>;

Counters expected_traffic(const std::string& content, const std::string& name) {
  const Lines lines = lines_of(content, 4095);
  for (size_t i = 2; i < lines.size(); ++i) {
    const size_t colon = lines[i].find(':');
    if (name.empty() || lines[i].find(name) == std::string::npos) continue;
    Counters counters;
    std::string text = colon == std::string::npos ? "" : lines[i].substr(colon + 1);
    while (counters.size() < 12) {
      const auto number = take_number(text);
      if (!number) return {};
      counters.push_back(*number);
    }
    counters.erase(counters.begin() + 4, counters.begin() + 8);
    return counters;
  }
  return {};
}

void read_traffic(const char* name, const std::string& content) {
  Counters told(8, -77);
  const int result = netcard_flew(name, &told[0], &told[1], &told[2], &told[3], &told[4], &told[5],
                                  &told[6], &told[7]);
  const Counters expected = expected_traffic(content, name);
  REQUIRE(result == (expected.empty() ? -1 : 0));
  REQUIRE(told == (expected.empty() ? Counters(8, -77) : expected));
}

// Its bytes as they lie in memory.
std::string dotted(uint32_t address) {
  unsigned char bytes[4];
  memcpy(bytes, &address, sizeof bytes);
  std::string text = std::to_string(bytes[0]);
  for (int i = 1; i < 4; ++i) text += '.' + std::to_string(bytes[i]);
  return text;
}

struct Found {
  int result;
  std::string gateway, interface;
};

// Of a table as the kernel writes it; none where a line is anything else.
std::optional<Found> expected_route(const std::string& content, const std::string& destination) {
  const Lines lines = lines_of(content, 1023);
  Found found = {0, "", ""};
  int highest = -1;
  for (size_t i = 1; i < lines.size(); ++i) {
    std::istringstream fields(lines[i]);
    std::string interface, to, by, flags, references, uses, metric, mask;
    fields >> interface >> to >> by >> flags >> references >> uses >> metric >> mask;
    for (const std::string& hex : {to, by, mask})
      if (hex.size() != 8 || hex.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        return {};
    if (flags.size() != 4 || flags.find_first_not_of("0123456789ABCDEF") != std::string::npos)
      return {};
    for (const std::string& number : {references, uses, metric})
      if (number.empty() || number.size() > 9 ||
          number.find_first_not_of("0123456789") != std::string::npos)
        return {};
    if (interface.size() > 15) return {};
    if (std::stoul(flags, nullptr, 16) % 2 == 0 || std::stoi(metric) <= highest) continue;
    if (dotted(static_cast<uint32_t>(std::stoul(to, nullptr, 16))) != destination) continue;
    highest = std::stoi(metric);
    found = {1, dotted(static_cast<uint32_t>(std::stoul(by, nullptr, 16))), interface};
  }
  return found;
}

void read_route(const char* destination, const std::string& content) {
  Guarded<16> gateway, interface;
  const int result = route_exist(destination, nullptr, gateway.get(), interface.get());
  REQUIRE(result == 1 ? gateway.ended() && interface.ended()
                      : result == 0 && gateway.untouched() && interface.untouched());
  REQUIRE(route_exist(destination, nullptr, nullptr, nullptr) == result);
  const std::optional<Found> expected = expected_route(content, destination);
  if (!expected) return;
  REQUIRE(result == expected->result);
  if (result == 1)
    REQUIRE(gateway.get() == expected->gateway && interface.get() == expected->interface);
}

// The number of the last line that has the name, as it is told; empty when none has it. No
// partition's number has a sign.
std::string expected_partition(const std::string& content, const std::string& name) {
  std::string last;
  for (const std::string& line : lines_of(content, 1024)) {
    if (line.rfind("mtd", 0) != 0) continue;
    const size_t end = line.find_first_not_of("0123456789", 3);
    if (end == 3 || end == std::string::npos || line[end] != ':') continue;
    const std::string digits = line.substr(3, end - 3);
    const std::string number =
        digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    if (number.size() > 10 || (!number.empty() && std::stoll(number) > INT32_MAX)) continue;
    if (line.find(name) != std::string::npos) last = number.empty() ? "0" : number;
  }
  return last;
}

// No node is there, so the second place is told.
void read_flash(const char* name, const std::string& content) {
  Guarded<32> character, block;
  REQUIRE(proc_mtddevice(name, character.get(), block.get()) == 0);
  const std::string number = expected_partition(content, name);
  REQUIRE(number.empty() == character.untouched() && number.empty() == block.untouched());
  REQUIRE(proc_mtddevice(name, nullptr, nullptr) == (number.empty() ? 0 : 1));
  if (number.empty()) return;
  REQUIRE(character.get() == "/dev/mtd/" + number && block.get() == "/dev/mtdblock/" + number);
}

// Of a file as the kernel writes it: seconds, a point, hundredths.
std::optional<std::string> expected_uptime(const std::string& content) {
  const size_t point = std::min(content.find_first_not_of("0123456789"), content.size());
  if (point == 0 || point > 9 || content[point] != '.') return {};
  return std::to_string(std::stoul(content.substr(0, point)));
}

void read_uptime(const char* start, const std::string& content) {
  char plain[32], days[32], since[32];
  const char* const now = uptime_getting(plain, sizeof plain);
  REQUIRE(!now == !livetime_getting(days, sizeof days));
  REQUIRE(!now == !livetime_count(start, since, sizeof since));
  if (const auto expected = expected_uptime(content)) REQUIRE(now && now == *expected);
  if (!now) return;
  REQUIRE(uptime_count(now, since, sizeof since) && strcmp(since, "0") == 0);
  unsigned hours, minutes, seconds, whole;
  REQUIRE(sscanf(days, "%u:%u:%u:%u", &hours, &minutes, &seconds, &whole) == 4);
  REQUIRE(std::to_string(((whole * 24 + hours) * 60 + minutes) * 60 + seconds) == now);
}

struct Reader {
  const char* path;
  void (*read)(const char* name, const std::string& content);
};

constexpr Reader kReaders[] = {{"/proc/net/dev", read_traffic},
                               {"/proc/net/route", read_route},
                               {"/proc/mtd", read_flash},
                               {"/proc/uptime", read_uptime}};

}  // namespace

void fuzzing::prepare() {
  prepare_device();
  replace_proc();
}

void fuzzing::check(Input input) {
  const std::string name = ExactText(input.line()).get();
  const Reader& reader = kReaders[input.byte() % 4];
  const std::string content = input.rest();
  put_file(reader.path, content);
  reader.read(name.c_str(), content);
}
