// What --help prints, made from the table of commands.
#pragma once

#include "tools/fairlead/command.h"

namespace control {

void print_help();
void print_noun_help(const char* noun);
void print_command_help(const Command& command);

// Every command with its arguments and options on a line, for completion and other programs.
void print_commands();

}  // namespace control
