// An action that is killed at one of its system calls.
#pragma once

#include <functional>

namespace fairlead_test {

// Runs the action in a child that is killed by SIGKILL when it has entered or left its n-th system
// call (stops counted from 1). True: killed there; false: the action came to its end first.
bool killed_at(int stop, const std::function<void()>& action);

}  // namespace fairlead_test
