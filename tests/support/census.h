// What a well-behaved call leaves as it found it: descriptors, children, signal mask, handlers,
// alarm, folder, file mode mask.
#pragma once

#include <map>
#include <set>
#include <string>

namespace fairlead_test {

struct Census {
  std::map<int, std::string> descriptors;  // number and what it leads to
  std::map<int, std::string> children;     // process id, state letter and name
  std::set<int> blocked;
  std::map<int, std::string> handlers;  // signal number; handler, flags and mask
  bool alarm = false;
  std::string directory;
  std::string umask;
};

// The default value store's descriptor is left out: it is opened once and stays open, by design.
Census take_census();

// One line per difference; empty when there is none.
std::string difference(const Census& before, const Census& after);

}  // namespace fairlead_test
