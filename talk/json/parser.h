// The tree parser from inside: what json_parse_fragment and its callers share.
#pragma once

#include "fairlead/talk/json.h"

namespace fairlead {

// Frees the partial tree and the begun token. The record refuses every further piece.
void abandon_parse(json_jpi_t* info);

// The end of a text that gave JSON_NEED_MORE: frees what was read. JSON_SYNTAX with its diagnostic
// line when the text was nothing but white space, else JSON_NEED_MORE.
json_error end_unfinished(json_jpi_t* info, bool empty);

}  // namespace fairlead
