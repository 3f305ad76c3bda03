// What the fuzzers share.
#include "fuzzing.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "fairlead/fairlead.h"

namespace fuzzing {
namespace {

namespace fs = std::filesystem;

constexpr int kSkipped = 77;

}  // namespace

unsigned Input::byte() {
  if (rest_.empty()) return 0;
  const auto first = static_cast<unsigned char>(rest_[0]);
  rest_.remove_prefix(1);
  return first;
}

std::string Input::take(size_t most) {
  const std::string taken(rest_.substr(0, most));
  rest_.remove_prefix(taken.size());
  return taken;
}

std::string Input::line() {
  const std::string taken = take(std::min(rest_.find('\n'), rest_.size()));
  if (!rest_.empty()) rest_.remove_prefix(1);
  return taken;
}

std::string Input::rest() { return take(rest_.size()); }

void broken(const char* file, int line, const char* property) {
  fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, property);
  fflush(stderr);
  abort();
}

ExactText::ExactText(std::string_view text) : block_(new char[text.size() + 1]) {
  memcpy(block_.get(), text.data(), text.size());
  block_[text.size()] = '\0';
}

std::string owned_string(char* text) {
  const fairlead::OwnedText owner(text);
  return text ? text : "<none>";
}

std::string text_of(talk_t* talk) { return owned_string(talk ? TalkString(talk) : nullptr); }

fairlead::OwnedTalk document(const std::string& text) {
  return fairlead::OwnedTalk(StringTalk(ExactText(text).get()));
}

void prepare_device() {
  if (!fs::exists("/.device-root")) skip("runs in a private device root only: tools/device-root");
  const int nothing = 0;
  REQUIRE(GvalueSet(nullptr, "log_level", &nothing, sizeof nothing) == 1);
}

void put_file(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::string file_content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return file ? content.str() : "<missing>";
}

void clear_folder(const std::string& path) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(path, ignored)) fs::remove_all(entry, ignored);
}

std::vector<std::string> files_below(const std::string& folder) {
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  return files;
}

void skip(const char* reason) {
  fprintf(stderr, "skipped: %s\n", reason);
  exit(kSkipped);
}

}  // namespace fuzzing

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzzing::prepare();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzing::check(fuzzing::Input({reinterpret_cast<const char*>(data), size}));
  return 0;
}
