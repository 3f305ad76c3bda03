// counter.cpp - an adapter in C++: a counter that lives as long as the process that loaded it.
//
// Build:    c++ -shared -fPIC -o counter.adp counter.cpp $(pkg-config --cflags --libs fairlead)
// Install:  cp counter.adp /prj/board/
// Ask:      he board/counter      he board/counter=41      he 'board/counter.add[1]'
//
// The runtime reads C symbols and knows no exceptions: export with extern "C" and let none escape.
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

#include "fairlead/fairlead.h"

namespace {

long count = 0;

std::optional<long> number_in(const char* text) {
  long number = 0;
  if (!text) return {};
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), number);
  if (error != std::errc() || *end != '\0') return {};
  return number;
}

talk_t* count_as_talk() {
  char text[24] = {};
  std::to_chars(text, text + sizeof text - 1, count);
  return RenderCreate(text);
}

// The value stays the caller's. 1 is success, anything else failure.
std::int32_t set(const char*, slash_t* path, talk_t* value) {
  if (path && SlashCount(path) > 0) return 0;
  const auto number = number_in(value ? RenderString(value) : "0");  // without a value: a deletion
  if (!number) return 0;
  count = *number;
  return 1;
}

talk_t* get(const char*, slash_t* path) {
  return path && SlashCount(path) > 0 ? nullptr : count_as_talk();
}

talk_t* add(const char*, param_t* parameters) {
  const auto number = number_in(parameters ? ParamGetS(parameters, 1) : nullptr);
  if (!number) return TALK_FAILED;
  count += *number;
  return count_as_talk();
}

talk_t* reset(const char*, param_t*) {
  count = 0;
  return TALK_DONE;
}

adp_interface_t interfaces[] = {
    {"add", add, "amount", "adds an amount and answers the new count"},
    {"reset", reset, nullptr, "back to zero"},
};

}  // namespace

extern "C" {
adp_set_t board_counter__set = set;
adp_get_t board_counter__get = get;
adp_interface_t* board_counter__if_array = interfaces;
std::int32_t board_counter__if_size = sizeof interfaces / sizeof interfaces[0];
}
