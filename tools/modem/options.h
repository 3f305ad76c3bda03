// The command line of `modem-player`.
#pragma once

namespace modem {

// A position in every answer: none, a fixed one, or one further in each round.
struct Place {
  bool given = false;
  bool each = false;
  int number = 0;
};

struct Options {
  const char* transcript = nullptr;
  const char* link = nullptr;
  Place split;   // behind so many bytes
  Place insert;  // at which gap
  const char* unsolicited = nullptr;
  int pause = 30;    // milliseconds between the two pieces of an answer
  int step_fd = -1;  // a byte read from it ends a pause, -1: time does
  int echo = -1;     // 1 on, 0 off, -1 as the transcript says
  bool serve = false;
  bool help = false;
};

// False after a usage error, which has then been told on standard error.
bool read_options(int argc, char** argv, Options& options);

void print_help();

}  // namespace modem
