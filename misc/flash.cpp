// The device nodes of a named flash partition.
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/ascii.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/stream.h"
#include "fairlead/misc/files.h"

namespace {

constexpr size_t kLineSize = 1024;
constexpr char kPrefix[] = "mtd";
constexpr size_t kPrefixSize = sizeof kPrefix - 1;
constexpr size_t kNodeSize = 32;  // what the callers' buffers hold at least

// The number of a line that begins with "mtd", a number and a colon; else -1.
int partition_number(const char* line) {
  if (strncmp(line, kPrefix, kPrefixSize) != 0 || !fairlead::is_digit(line[kPrefixSize])) return -1;
  char* end;
  const long long number = strtoll(line + kPrefixSize, &end, 10);
  return number <= INT_MAX && *end == ':' ? static_cast<int>(number) : -1;
}

// Tries both places of a node; the path of the last one tried stays in `path`.
bool find_node(const char* first, const char* second, int number, char* path) {
  for (const char* prefix : {first, second}) {
    fairlead::BoundedText(path, kNodeSize).add(prefix).format("%d", number);
    struct stat status;
    if (stat(path, &status) == 0) return true;
  }
  return false;
}

}  // namespace

extern "C" int proc_mtddevice(const char* name, char* character_path, char* block_path) {
  if (!name) return fairlead::fail<int>(EINVAL);
  const fairlead::Stream table = fairlead::open_stream("/proc/mtd");
  if (!table) return 0;

  bool found = false;
  char line[kLineSize];
  while (fgets(line, sizeof line, table.get())) {
    const int number = partition_number(line);
    if (number < 0 || !strstr(line, name)) continue;
    found = true;
    if (character_path) found = find_node("/dev/mtd", "/dev/mtd/", number, character_path);
    if (block_path && !find_node("/dev/mtdblock", "/dev/mtdblock/", number, block_path))
      found = false;
  }
  return found ? 1 : 0;
}
