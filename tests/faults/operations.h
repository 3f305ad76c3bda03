// What the library changes on a device, one operation of each kind: how it was before, the call,
// and what any reader may find afterwards.
#pragma once

#include <string>
#include <vector>

namespace fairlead_test {

struct Operation {
  const char* name;
  void (*arrange)();        // the state before
  int (*act)();             // the call: 1 when it says that it is done
  std::string (*state)();   // what a reader finds
  bool on_disk = false;     // a change of the configuration, which a power cut must not tear
  bool asks_child = false;  // the answer comes from a child that is waited for
};

const std::vector<Operation>& operations();

// Every name below the writable folders, a line each. The mark of a changed configuration is left
// out: it is made after the change, and a process may die in between.
std::string listing();

}  // namespace fairlead_test
