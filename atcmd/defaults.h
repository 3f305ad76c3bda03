// The callbacks of a handle whose opener gave none.
#pragma once

#include "fairlead/atcmd.h"

namespace fairlead::atcmd {

// The bytes that the receive buffer and the last acknowledgement hold beside their terminator.
inline constexpr int kRoom = 1023;

int default_parser(atcmd_t* atcmd, const char* command, const char* expect, uint32_t flags);
int default_notify(atcmd_t* atcmd, const char* command);

}  // namespace fairlead::atcmd
