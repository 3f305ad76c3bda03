// The channel for tests: closed after each of them, and what is written to it.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "fairlead/log.h"
#include "fairlead/state/gvalue.h"
#include "support/capture.h"
#include "support/child.h"
#include "support/device_test.h"

namespace fairlead_test {

class LogTest : public DeviceTest {
 protected:
  void TearDown() override {
    GlogClose();
    DeviceTest::TearDown();
  }

  // What one message prints on the console, with a mode of its own.
  static Captured print(uint32_t word, const char* text) {
    return capture([&] { LogWrite(word | LOG_MODE_CONSOLE, "source", 12, "%s", text); });
  }

  static bool ends_with(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
  }

  static std::string place() { return "{" + std::to_string(getpid()) + "/source/12}"; }
};

// The default store lives until its process ends: for use in a child.
inline int store_setting(const char* name, uint32_t value) {
  return GvalueSet(nullptr, name, &value, sizeof value);
}

}  // namespace fairlead_test
