// The command line of the control tool.
#pragma once

#include "tools/fairlead/command.h"

namespace control {

// Every option, for the help.
struct Option {
  const char* name;
  const char* argument;  // null: none
  uint32_t bit;          // 0: every command has it
  const char* summary;
};
std::span<const Option> options();

// Takes the options out of the arguments, which move up. `given` gets the bits of what was there.
// kDone, or kUsage after a usage error, which has then been told.
Exit read_options(int& count, char** arguments, Options& options, uint32_t& given);

// kUsage when the command does not know an option that was given.
Exit check_options(const Command& command, uint32_t given);

// False when the text is no whole number within the bounds.
bool read_number(const char* text, long least, long most, long& number);

}  // namespace control
