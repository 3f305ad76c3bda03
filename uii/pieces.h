// What an analysis leaves in an identifier record.
#pragma once

#include "fairlead/uii.h"

namespace fairlead {

// The source name of this folder's log messages.
inline constexpr char kUiiSource[] = "uii";

// Frees the pieces and clears every field but the text.
void release_pieces(uii_t* uii);

}  // namespace fairlead
