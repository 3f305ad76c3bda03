// Reads the command line.
#include "tools/modem/options.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include "tools/modem/report.h"

namespace modem {
namespace {

constexpr char kHelp[] =
    R"(usage: modem-player [OPTION...] TRANSCRIPT

Plays a modem on a pseudo-terminal, whose name it prints. TRANSCRIPT says which commands the modem
waits for and what it says; docs/modem.md describes it.

  --link PATH           a symbolic link to the pseudo-terminal, for as long as the player runs
  --serve               answer the transcript's commands in any order, without end; any other
                        command is answered with ERROR
  --echo on|off         whatever the transcript says about it
  --split N             send every answer in two pieces, the first of N bytes, echo included
  --split each          play the transcript again and again, cut one byte further each time
  --insert-at GAP TEXT  send an unsolicited line in every answer: at gap 0 before the echo, 1 behind
                        it, 2 behind the first line of the answer, and so on
  --insert-at each TEXT play the transcript again and again, one gap further each time
  --pause MS            between the two pieces of an answer; 30
  --step FD             in place of time, one byte read from FD ends each pause, those of the
                        transcript included
  --help                print this text

Without --serve it ends with status 0 behind the last step, and with 1 when another command came
than the transcript has.
)";

bool usage_error(const char* problem, const char* argument) {
  complain("%s: %s", argument, problem);
  fputs("try 'modem-player --help'\n", stderr);
  return false;
}

bool read_number(const char* text, int& number) {
  const char* const end = text + strlen(text);
  const auto [stop, error] = std::from_chars(text, end, number);
  return error == std::errc() && stop == end && number >= 0;
}

bool read_place(const char* text, Place& place) {
  place.given = true;
  place.each = strcmp(text, "each") == 0;
  return place.each || read_number(text, place.number);
}

class Reader {
 public:
  Reader(int argc, char** argv, Options& options)
      : options_(options), next_(argv + (argc > 0 ? 1 : 0)), end_(argv + argc) {}

  bool read() {
    while (next_ < end_)
      if (!take(*next_++)) return false;
    if (options_.help) return true;
    if (!options_.transcript) return usage_error("no transcript given", "TRANSCRIPT");
    if (options_.split.each && options_.insert.each)
      return usage_error("only one of both can be 'each'", "--split, --insert-at");
    return true;
  }

 private:
  bool take(const char* argument) {
    if (strcmp(argument, "--help") == 0) return options_.help = true;
    if (strcmp(argument, "--serve") == 0) return options_.serve = true;
    if (argument[0] == '-') return take_value(argument);
    if (options_.transcript) return usage_error("one transcript at a time", argument);
    options_.transcript = argument;
    return true;
  }

  bool take_value(const char* argument) {
    if (next_ == end_) return usage_error("unknown, or its value is missing", argument);
    const char* const value = *next_++;
    return read_value(argument, value) || usage_error("unknown, or its value is wrong", argument);
  }

  bool read_value(const char* argument, const char* value) {
    if (strcmp(argument, "--link") == 0) return *(options_.link = value) != '\0';
    if (strcmp(argument, "--pause") == 0) return read_number(value, options_.pause);
    if (strcmp(argument, "--step") == 0) return read_number(value, options_.step_fd);
    if (strcmp(argument, "--split") == 0) return read_place(value, options_.split);
    if (strcmp(argument, "--echo") == 0) return read_echo(value);
    if (strcmp(argument, "--insert-at") != 0 || next_ == end_) return false;
    options_.unsolicited = *next_++;
    return read_place(value, options_.insert);
  }

  bool read_echo(const char* value) {
    options_.echo = strcmp(value, "on") == 0;
    return options_.echo == 1 || strcmp(value, "off") == 0;
  }

  Options& options_;
  char** next_;
  char** end_;
};

}  // namespace

bool read_options(int argc, char** argv, Options& options) {
  return Reader(argc, argv, options).read();
}

void print_help() { fputs(kHelp, stdout); }

}  // namespace modem
