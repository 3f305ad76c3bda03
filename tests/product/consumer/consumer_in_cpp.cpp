// consumer_in_cpp.cpp - the same in C++, with what C++ programs have that the library does without.
#include <fairlead/fairlead.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

struct Free {
  void operator()(talk_t* talk) const { TalkFree(talk); }
};

int main() {
  const std::unique_ptr<vessel_t, Free> vessel(StringVessel("{\"installed\":\"works\"}"));
  const char* value = VesselGetS(vessel.get(), "installed");
  const std::string text = value ? value : "";
  std::cout << text << "\n";
  return text == "works" ? EXIT_SUCCESS : EXIT_FAILURE;
}
