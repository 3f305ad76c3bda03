// Help texts.
#include "tools/fairlead/help.h"

#include <cstdio>
#include <cstring>

#include "base/bounded_text.h"
#include "tools/fairlead/commands.h"
#include "tools/fairlead/options.h"

namespace control {

namespace {

constexpr char kExits[] =
    "\nexit status: 0 answered or done, 1 failed, 2 the command was not understood, 3 nothing "
    "there\n";

constexpr int kNameWidth = 58;

void print_form(const Command& command, const char* before) {
  fairlead::FixedText<256> form;
  form.add(command.noun);
  if (command.verb) form.add(' ').add(command.verb);
  if (*command.arguments) form.add(' ').add(command.arguments);
  printf("%s%-*s %s\n", before, kNameWidth, form.text(), command.summary);
}

void print_options(uint32_t bits) {
  puts("\noptions:");
  for (const Option& option : options()) {
    if (option.bit && !(option.bit & bits)) continue;
    fairlead::FixedText<64> form;
    form.add(option.name);
    if (option.argument) form.add(' ').add(option.argument);
    printf("  %-22s %s\n", form.text(), option.summary);
  }
}

}  // namespace

void print_help() {
  puts(
      "usage: fairlead NOUN VERB [ARGUMENT...] [OPTION...]\n\nReaches the device's control plane "
      "from a shell.\n");
  const char* noun = "";
  for (const Command& command : commands()) {
    if (*noun && strcmp(noun, command.noun) != 0) putchar('\n');
    noun = command.noun;
    print_form(command, "  ");
  }
  print_options(~0u);
  puts(
      "  --                     what follows are arguments, even if they begin with \"--\"\n"
      "  --version              print the version\n"
      "  --commands             print every command with its options on a line, for programs");
  fputs(kExits, stdout);
}

void print_noun_help(const char* noun) {
  printf("usage: fairlead %s %sARGUMENT...\n\n", noun, find_command(noun, nullptr) ? "" : "VERB ");
  uint32_t bits = 0;
  for (const Command& command : commands()) {
    if (strcmp(command.noun, noun) != 0) continue;
    print_form(command, "  ");
    bits |= command.options;
  }
  puts("\nexamples:");
  for (const Command& command : commands())
    if (strcmp(command.noun, noun) == 0) printf("  %s\n", command.example);
  print_options(bits);
}

void print_command_help(const Command& command) {
  printf("usage: fairlead %s%s%s %s\n\n%s\n\nexample:\n  %s\n", command.noun,
         command.verb ? " " : "", command.verb ? command.verb : "", command.arguments,
         command.summary, command.example);
  print_options(command.options);
  fputs(kExits, stdout);
}

void print_commands() {
  for (const Command& command : commands()) {
    printf("%s %s", command.noun, command.verb ? command.verb : "-");
    for (const Option& option : options())
      if (!option.bit || (option.bit & command.options)) printf(" %s", option.name);
    printf(" %s\n", command.arguments);
  }
}

}  // namespace control
