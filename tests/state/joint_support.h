// What the tests of joints share: the file, and documents as text.
#pragma once

#include <cerrno>
#include <string>

#include "adp/channel_fixture.h"

namespace fairlead_test {

inline constexpr char kJointFile[] = "/tmp/.var/joint.cache";

class JointTest : public ChannelTest {
 protected:
  static std::string file() { return file_content(kJointFile); }

  static std::string listed(const char* object) { return spelled(JointList(object)); }

  // Creates a joint of the object "wan" and its event "up".
  static int create(const char* target, const char* interface) {
    return JointCreate("wan", "up", target, interface);
  }
};

}  // namespace fairlead_test
