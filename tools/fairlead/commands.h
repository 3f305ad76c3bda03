// All commands of the control tool.
#pragma once

#include <span>

#include "tools/fairlead/command.h"

namespace control {

std::span<const Command> commands();

// Null when there is no such command. `verb` may be null.
const Command* find_command(const char* noun, const char* verb);
bool is_noun(const char* noun);

// How many arguments a command needs and takes, counted in their description.
struct ArgumentCount {
  size_t least, most;  // SIZE_MAX: any number, "..."
};
ArgumentCount argument_count(const Command& command);

}  // namespace control
