// Folders, interfaces and routes of a process' own, out of sight of all other processes.
#pragma once

#include <sched.h>

#include <string>

namespace fairlead_test {

// Moves the process into new namespaces: CLONE_NEWNS, CLONE_NEWNET. As root that takes the right
// to, else a user namespace in which the process is root. False where neither is allowed.
bool enter_namespaces(int flags);

// Puts an empty folder over this one. Needs a mount namespace of the process' own.
bool hide(const std::string& folder);

}  // namespace fairlead_test
