// One call of each kind that can be made to fail, made from a shared library.
#pragma once

#include <cstddef>

#include "support/faults.h"

struct Probe {
  fairlead_test::Call kind;
  const char* name;
  bool (*succeeds)();  // makes the call, once; errno tells why it failed
};

extern "C" const Probe* fault_probes(size_t* count);
