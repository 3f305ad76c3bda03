// Reads the command line. Argument zero is never looked at: services start the tool under their own
// names.
#include "tools/he/options.h"

#include <cstdio>
#include <cstring>

#include "tools/he/report.h"

namespace he {
namespace {

constexpr char kHelp[] =
    R"(usage: he [-s] [-p] [-q] IDENTIFIER
       he [-s] [-p] [-q] -r FILE|-

Asks one thing of one object of the device and prints the answer.

  net/wan                    the whole object
  net/wan:dns/first          a setting inside it
  net/wan:mtu=1492           give a setting a value; nothing behind "=" deletes it
  net/wan|{"mtu":"1492"}     merge settings into the object; net/wan:dns|{...} into a part of it
  net/wan.                   list the interfaces the object offers
  net/wan.dial[ppp0,30]      call an interface, with parameters
  :   .   ?                  list the configurations, the registrations, the adapters

  -r FILE      the request is a document in FILE, or on standard input for "-": an identifier, or
               an object with "adp", "op", "ab", "v" and the parameters "1" to "20"
  -p           print an object indented
  -q           print neither the answer nor the reason of a failure
  -s           let a child process do the adapter's work: if it crashes, only that request fails
  --           what follows is an identifier, even if it begins with "-"
  --help       print this text
  --version    print the version

exit status: 0 answered or done, 1 failed, 2 the request was not understood, 3 nothing there
)";

class Reader {
 public:
  Reader(int argc, char** argv, Options& options)
      : options_(options), next_(argv + (argc > 0 ? 1 : 0)), end_(argv + argc) {}

  bool read() {
    while (next_ < end_)
      if (!take(*next_++)) return false;
    return complete();
  }

 private:
  bool take(const char* argument) {
    if (switches_ended_ || argument[0] != '-' || argument[1] == '\0')
      return take_identifier(argument);
    return argument[1] == '-' ? take_word(argument) : take_letters(argument + 1);
  }

  bool take_word(const char* argument) {
    if (strcmp(argument, "--") == 0) return switches_ended_ = true;
    if (strcmp(argument, "--help") == 0) return options_.help = true;
    if (strcmp(argument, "--version") == 0) return options_.version = true;
    return usage_error("unknown switch '%s'", argument);
  }

  bool take_letters(const char* letters) {
    for (; *letters; ++letters) {
      if (*letters == 'r') return take_file(letters + 1);
      if (!take_letter(*letters)) return usage_error("unknown switch '-%c'", *letters);
    }
    return true;
  }

  bool take_letter(char letter) {
    switch (letter) {
      case 'p':
        return options_.indented = true;
      case 'q':
        return options_.quiet = true;
      case 's':
        return options_.isolated = true;
      default:
        return false;
    }
  }

  // The name follows at once, as in "-rFILE", or as the next argument.
  bool take_file(const char* rest) {
    if (options_.request_file) return usage_error("-r stands there twice");
    options_.request_file = *rest ? rest : next_ < end_ ? *next_++ : "";
    return *options_.request_file || usage_error("-r needs a file name, or - for standard input");
  }

  bool take_identifier(const char* argument) {
    if (options_.identifier)
      return usage_error("one request at a time: '%s' is a second one", argument);
    options_.identifier = argument;
    return true;
  }

  bool complete() const {
    if (options_.help || options_.version) return true;
    if (options_.identifier && options_.request_file)
      return usage_error("with -r there is no place for the identifier '%s'", options_.identifier);
    return options_.identifier || options_.request_file || usage_error("no request given");
  }

  Options& options_;
  char** next_;
  char** end_;
  bool switches_ended_ = false;
};

}  // namespace

bool read_options(int argc, char** argv, Options& options) {
  return Reader(argc, argv, options).read();
}

void print_help() { fputs(kHelp, stdout); }

}  // namespace he
