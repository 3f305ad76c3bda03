// A daemon's registration, for those who choose how its record is opened.
#pragma once

namespace fairlead {

// DaemonRegister with further flags of open(2).
int register_daemon(const char* path, int flags, const char* object, const char* interface,
                    const char* parameters);

}  // namespace fairlead
