// All commands of the control tool.
#pragma once

#include <span>
#include <string_view>

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

// What the description calls the argument of this index.
std::string_view argument_name(const Command& command, size_t index);

}  // namespace control
