// What a well-behaved call leaves as it found it: descriptors, children, signal mask, handlers,
// alarm, folder.
#pragma once

#include <csignal>
#include <map>
#include <string>
#include <vector>

namespace fairlead_test {

struct Census {
  std::map<int, std::string> descriptors;  // number and what it leads to
  std::vector<std::string> children;
  std::vector<int> blocked;
  std::map<int, std::string> handlers;  // signal number, handler and flags
  bool alarm = false;
  std::string directory;
};

Census take_census();

// One line per difference; empty when there is none.
std::string difference(const Census& before, const Census& after);

}  // namespace fairlead_test
