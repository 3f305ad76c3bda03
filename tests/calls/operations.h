// The operations whose system calls are counted: one of each kind that a device does all day.
#pragma once

#include <vector>

namespace fairlead_test {

struct Operation {
  const char* name;  // as in the table
  bool (*act)();     // true: it did what it should
};

const std::vector<Operation>& operations();

// A device with a configuration, a registration, a joint, a module and a script.
void arrange_device();

}  // namespace fairlead_test
