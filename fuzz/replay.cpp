// Feeds files to a fuzzer, where there is no libFuzzer: the kept corpus in every configuration, or
// one input that a fuzzer has found.
//
// usage: REPLAY FILE|FOLDER...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

// In the order of their names, so that the last one printed is the one that broke.
std::vector<fs::path> inputs(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(path)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool feed(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  if (!file) return false;
  const std::string bytes = content.str();
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  setvbuf(stdout, nullptr, _IONBF, 0);
  LLVMFuzzerInitialize(&count, &arguments);
  int fed = 0;
  for (int i = 1; i < count; ++i) {
    for (const fs::path& path : inputs(arguments[i])) {
      printf("%s\n", path.c_str());
      if (!feed(path)) {
        fprintf(stderr, "cannot read it\n");
        return 1;
      }
      ++fed;
    }
  }
  printf("%d inputs\n", fed);
  return fed > 0 ? 0 : 1;
}
