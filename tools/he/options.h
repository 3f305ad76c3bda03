// The command line of `he`.
#pragma once

namespace he {

struct Options {
  const char* identifier = nullptr;
  const char* request_file = nullptr;  // "-": standard input
  bool isolated = false;
  bool indented = false;
  bool quiet = false;
  bool help = false;
  bool version = false;
};

// False after a usage error, which has then been told on standard error.
bool read_options(int argc, char** argv, Options& options);

void print_help();

}  // namespace he
