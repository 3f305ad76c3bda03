// Prints an answer on standard output.
#pragma once

#include "fairlead/talk/json.h"

namespace he {

// An object as compact JSON, or indented; a text as it is. Null, or why it could not be printed.
const char* print_answer(talk_t* answer, bool indented);

}  // namespace he
