// What the tests of adapters share: module files in the project tree, answers and listings as text.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "adp/channel_fixture.h"

namespace fairlead_test {

class AdapterTest : public ChannelTest {
 protected:
  // Puts a module of the tests at a place such as "net/probe".
  static void install(const std::string& module, const std::string& place) {
    const std::string file = "/prj/" + place + ".adp";
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::filesystem::copy_file(std::string(MODULE_FOLDER) + "/" + module + ".adp", file,
                               std::filesystem::copy_options::overwrite_existing);
  }

  // What the next get of net/probe answers.
  static void answer_with(const std::string& text) { put_file("/tmp/.var/probe.get", text); }

  static std::string sets() { return file_content("/tmp/.var/probe.set"); }
};

}  // namespace fairlead_test
