// The device nodes of a named flash partition.
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/files.h"

namespace {

constexpr size_t kLineSize = 1024;
constexpr size_t kNodeSize = 32;  // what the callers' buffers hold at least

struct Closer {
  void operator()(FILE* file) const { fclose(file); }
};

// Tries both places of a node; the path of the last one tried stays in `path`.
bool find_node(const char* first, const char* second, int number, char* path) {
  struct stat status;
  for (const char* pattern : {first, second}) {
    fairlead::BoundedText(path, kNodeSize).add(pattern).format("%d", number);
    if (stat(path, &status) == 0) return true;
  }
  return false;
}

}  // namespace

extern "C" int proc_mtddevice(const char* name, char* character_path, char* block_path) {
  if (!name) return fairlead::fail<int>(EINVAL);
  const std::unique_ptr<FILE, Closer> table(fopen("/proc/mtd", "re"));
  if (!table) return 0;

  bool found = false;
  char line[kLineSize];
  while (fgets(line, sizeof line, table.get())) {
    int number = 0, end = 0;
    if (sscanf(line, "mtd%d:%n", &number, &end) != 1 || end == 0 || !strstr(line, name)) continue;
    found = true;
    if (character_path) found = find_node("/dev/mtd", "/dev/mtd/", number, character_path);
    if (block_path && !find_node("/dev/mtdblock", "/dev/mtdblock/", number, block_path))
      found = false;
  }
  return found ? 1 : 0;
}
