// What the fuzzers share: their input, their verdict, and the device they work on.
//
// A fuzzer defines prepare() and check(); fuzzing.cpp makes libFuzzer's two functions of them. It
// is linked with libFuzzer, or with replay.cpp, which feeds the kept corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/owned.h"
#include "talk/owned_talk.h"

namespace fuzzing {

// The bytes of one run, taken from the front.
class Input {
 public:
  explicit Input(std::string_view bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }
  unsigned byte();  // 0 when there is none left
  std::string take(size_t most);
  std::string line();  // up to a line feed, which is dropped
  std::string rest();  // all that is left

 private:
  std::string_view rest_;
};

void prepare();           // once, before the first run
void check(Input input);  // one run; ends the process when a property does not hold

[[noreturn]] void broken(const char* file, int line, const char* property);
#define REQUIRE(property) \
  ((property) ? static_cast<void>(0) : fuzzing::broken(__FILE__, __LINE__, #property))

// A text in a block of exactly its size, so that a sanitizer sees every step beyond it.
class ExactText {
 public:
  explicit ExactText(std::string_view text);
  char* get() { return block_.get(); }

 private:
  std::unique_ptr<char[]> block_;
};

// What a function handed out as text, freed.
std::string owned_string(char* text);

// The document's text; "<none>" where it has none.
std::string text_of(talk_t* talk);

// The document of a text, or an empty owner.
fairlead::OwnedTalk document(const std::string& text);

// The private device root. Ends the process, as skipped, where there is none; the log is silent.
void prepare_device();
void put_file(const std::string& path, const std::string& content);
std::string file_content(const std::string& path);
void clear_folder(const std::string& path);
std::vector<std::string> files_below(const std::string& folder);

// Ends the process when the fuzzer can't work here: status 77.
[[noreturn]] void skip(const char* reason);

}  // namespace fuzzing
