// The log channel of this process: its identity and where its settings are read.
#pragma once

#include <cstdint>

namespace fairlead {

// What the next message goes by; looked up in the default value store for as long as it is not
// known.
uint32_t channel_mode();
uint32_t channel_threshold();

}  // namespace fairlead
