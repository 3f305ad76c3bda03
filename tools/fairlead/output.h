// Answers on standard output: JSON for programs, columns for people, tabs between columns in a
// pipe.
#pragma once

#include <cstdint>
#include <span>

#include "fairlead/talk/node.h"
#include "tools/fairlead/command.h"

namespace control {

// Nothing to tell but that it worked: silent, or {"result":"done"}.
Exit done(const Call& call);

// One value, in JSON under `name`. The text may hold any byte.
Exit show_text(const Call& call, const char* name, const char* text);
Exit show_number(const Call& call, const char* name, int64_t number);

// A document: every string in it on a line, behind its path. A single string stands alone.
Exit show(const Call& call, talk_t* document);

// An object of objects as a table: each member's name, and these of its members.
Exit show_table(const Call& call, talk_t* document, const char* name_title,
                std::span<const char* const> columns);

// Adds a text of any bytes to a document. False when memory runs out.
bool add_text(vessel_t* document, const char* name, const char* text);

}  // namespace control
