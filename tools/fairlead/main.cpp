// fairlead - the control tool: what programs can ask of the device, from a shell.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "fairlead/log.h"
#include "tools/fairlead/commands.h"
#include "tools/fairlead/help.h"
#include "tools/fairlead/options.h"
#include "tools/fairlead/report.h"
#include "tools/standard_streams.h"

namespace {

using namespace control;

Exit finish_output(Exit result) {
  const int error = tools::flush_output();
  return error == 0 ? result : fail_because(error, "standard output");
}

Exit check_count(const Command& command, std::span<char* const> arguments) {
  const ArgumentCount count = argument_count(command);
  const char* space = command.verb ? " " : "";
  const char* verb = command.verb ? command.verb : "";
  if (arguments.size() < count.least)
    return refuse("%s%s%s needs %s", command.noun, space, verb, command.arguments);
  if (arguments.size() > count.most)
    return refuse("%s%s%s: '%s' is one argument too many", command.noun, space, verb,
                  arguments[count.most]);
  // The last one may be, where a command has a use for it.
  for (size_t i = 0; i + 1 < arguments.size() && i < count.least; ++i)
    if (*arguments[i] == '\0') {
      const std::string_view name = argument_name(command, i);
      return refuse("%s%s%s: %.*s is empty", command.noun, space, verb,
                    static_cast<int>(name.size()), name.data());
    }
  return kDone;
}

Exit run_command(const Command& command, std::span<char* const> arguments, const Options& options,
                 uint32_t given) {
  if (options.help) {
    print_command_help(command);
    return kDone;
  }
  if (const Exit refused = check_options(command, given); refused != kDone) return refused;
  if (const Exit refused = check_count(command, arguments); refused != kDone) return refused;
  return command.run({command, options, arguments});
}

Exit run(std::span<char* const> words, const Options& options, uint32_t given) {
  if (words.empty()) {
    if (!options.help) return refuse("no command given");
    print_help();
    return kDone;
  }
  const char* noun = words[0];
  const char* verb = words.size() > 1 ? words[1] : nullptr;
  const Command* command = find_command(noun, verb);
  if (command) return run_command(*command, words.subspan(command->verb ? 2 : 1), options, given);
  if (!is_noun(noun)) return refuse("unknown noun '%s'", noun);
  if (verb) return refuse("unknown verb '%s' for %s", verb, noun);
  if (!options.help) return refuse("%s needs a verb", noun);
  print_noun_help(noun);
  return kDone;
}

// The two words that ask about the tool itself.
bool answer_about_self(const char* word) {
  const bool version = strcmp(word, "--version") == 0;
  if (version) puts("fairlead " FAIRLEAD_VERSION);
  const bool commands = strcmp(word, "--commands") == 0;
  if (commands) print_commands();
  return version || commands;
}

}  // namespace

int main(int argc, char** argv) {
  tools::occupy_closed_standard_descriptors();
  int count = argc > 0 ? argc - 1 : 0;
  char** arguments = argv + (argc > 0 ? 1 : 0);
  if (count == 1 && answer_about_self(arguments[0])) return finish_output(kDone);
  Options options;
  uint32_t given = 0;
  if (const Exit refused = read_options(count, arguments, options, given); refused != kDone)
    return refused;
  GlogOpen("fairlead", 0, 0);
  return finish_output(run({arguments, static_cast<size_t>(count)}, options, given));
}
