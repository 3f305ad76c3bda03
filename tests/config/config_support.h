// What the tests of the configuration store share.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <string>

#include "fairlead/fairlead.h"
#include "support/device_test.h"

namespace fairlead_test {

class ConfigTest : public DeviceTest {
 protected:
  // Sets a value given as text and frees it.
  static int set(const char* name, const char* path, const char* value) {
    talk_t* talk = StringTalk(value);
    const int result = ConfigSet(name, nullptr, path, talk);
    TalkFree(talk);
    return result;
  }

  static std::string get(const char* name, const char* path) {
    talk_t* value = ConfigGet(name, nullptr, path);
    char* text = value ? TalkString(value) : nullptr;
    const std::string result = !value ? "<null>" : text ? text : "<no text>";
    free(text);
    TalkFree(value);
    return result;
  }
};

}  // namespace fairlead_test
