// Options, wherever they stand before "--".
#include "tools/fairlead/options.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tools/fairlead/report.h"

namespace control {

namespace {

// One of the three says where the option's value goes.
struct Target {
  Option option;
  bool Options::*flag;
  const char* Options::*text;
  int Options::*number;
};

constexpr Target kTargets[] = {
    {{"--json", nullptr, 0, "print the answer as JSON, for programs"},
     &Options::json,
     nullptr,
     nullptr},
    {{"--help", nullptr, 0, "print help, on one noun or one command where they are given"},
     &Options::help,
     nullptr,
     nullptr},
    {{"--int", nullptr, kInteger, "the value is a number of 32 bits"},
     &Options::integer,
     nullptr,
     nullptr},
    {{"--store", "NAME", kStore, "another store than \"default\""},
     nullptr,
     &Options::store,
     nullptr},
    {{"--timeout", "SECONDS", kTimeout, "how long to wait, 5 if not given"},
     nullptr,
     nullptr,
     &Options::timeout},
    {{"--interval", "SECONDS", kInterval, "the time between two checks, 5 if not given"},
     nullptr,
     nullptr,
     &Options::interval},
    {{"--speed", "BAUD", kSpeed, "the speed of the line, left alone if not given"},
     nullptr,
     nullptr,
     &Options::speed},
    {{"--expect", "TEXT", kExpect, "what ends a good reply, OK if not given"},
     nullptr,
     &Options::expect,
     nullptr},
    {{"--decode", nullptr, kDecode, "the way back"}, &Options::decode, nullptr, nullptr},
};

constexpr size_t kOptions = std::size(kTargets);

struct OptionList {
  Option list[kOptions];
};

constexpr OptionList list_options() {
  OptionList all = {};
  for (size_t i = 0; i < kOptions; ++i) all.list[i] = kTargets[i].option;
  return all;
}

constexpr OptionList kAll = list_options();

const Target* find_target(const char* name) {
  for (const Target& target : kTargets)
    if (strcmp(target.option.name, name) == 0) return &target;
  return nullptr;
}

Exit store_value(const Target& target, const char* value, Options& options) {
  if (target.text) {
    options.*target.text = value;
    return kDone;
  }
  long number = 0;
  if (!read_number(value, 1, INT_MAX, number))
    return refuse("%s: '%s' is no number of %s, at least 1", target.option.name, value,
                  target.option.bit == kSpeed ? "baud" : "seconds");
  options.*target.number = static_cast<int>(number);
  return kDone;
}

}  // namespace

std::span<const Option> options() { return kAll.list; }

bool read_number(const char* text, long least, long most, long& number) {
  if (*text == '\0' || strchr(" \t\n\v\f\r", *text)) return false;
  char* end = nullptr;
  errno = 0;
  number = strtol(text, &end, 10);
  return errno == 0 && *end == '\0' && number >= least && number <= most;
}

Exit read_options(int& count, char** arguments, Options& options, uint32_t& given) {
  int kept = 0;
  given = 0;
  for (int i = 0; i < count; ++i) {
    if (strcmp(arguments[i], "--") == 0) {
      while (++i < count) arguments[kept++] = arguments[i];
      break;
    }
    if (strncmp(arguments[i], "--", 2) != 0) {
      arguments[kept++] = arguments[i];
      continue;
    }
    const Target* target = find_target(arguments[i]);
    if (!target) return refuse("unknown option '%s'", arguments[i]);
    given |= target->option.bit;
    if (target->flag) {
      options.*target->flag = true;
      continue;
    }
    if (++i == count)
      return refuse("%s needs a value: %s", target->option.name, target->option.argument);
    if (const Exit result = store_value(*target, arguments[i], options); result != kDone)
      return result;
  }
  count = kept;
  return kDone;
}

Exit check_options(const Command& command, uint32_t given) {
  for (const Option& option : options())
    if (option.bit & given & ~command.options)
      return refuse("%s%s%s has no option %s", command.noun, command.verb ? " " : "",
                    command.verb ? command.verb : "", option.name);
  return kDone;
}

}  // namespace control
