// The fixture: clears the private device root and compares the census.
#include "support/device_test.h"

#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fairlead_test {
namespace {

namespace fs = std::filesystem;

// Never crosses into what is mounted below, such as a source tree under "/tmp".
void clear_folder(const char* folder) {
  const auto visit = [](const char* path, const struct stat*, int, FTW* position) {
    if (position->level > 0) remove(path);
    return 0;
  };
  nftw(folder, visit, 16, FTW_DEPTH | FTW_PHYS | FTW_MOUNT);
}

}  // namespace

void DeviceTest::SetUp() {
  // A failed assertion would only end this function: the fixture built on it would go on and write.
  if (!fs::exists("/.device-root")) {
    fprintf(stderr, "tests run in a private device root only: tools/device-root TEST\n");
    _exit(EXIT_FAILURE);
  }
  empty_root();
  before_ = take_census();
}

void DeviceTest::TearDown() {
  if (!before_) return;
  const std::string changed = difference(*before_, take_census());
  EXPECT_EQ("", changed) << "the test left the process changed";
}

void empty_root() {
  for (const char* folder : {"/prj", "/etc/config", "/tmp"}) clear_folder(folder);
  make_directories("/tmp/.var");
}

void put_file(const std::string& path, const std::string& content, int mode) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
  chmod(path.c_str(), static_cast<mode_t>(mode));
}

std::string file_content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "<missing>";
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

void make_directories(const std::string& path) { fs::create_directories(path); }

void remove_tree(const std::string& path) { fs::remove_all(path); }

}  // namespace fairlead_test
