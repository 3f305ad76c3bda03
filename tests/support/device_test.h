// The fixture of every test: an empty private device root before it, and a census of the process
// after it.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/census.h"

namespace fairlead_test {

class DeviceTest : public testing::Test {
 protected:
  void SetUp() override;     // empties the private device root
  void TearDown() override;  // fails the test when the process is not as it was before it

 private:
  std::optional<Census> before_;
};

// Empties "/prj", "/etc/config" and "/tmp", and makes "/tmp/.var".
void empty_root();

// Whole files, for arranging and checking.
void put_file(const std::string& path, const std::string& content, int mode = 0644);
std::string file_content(const std::string& path);  // "<missing>" when it cannot be read
bool exists(const std::string& path);
void make_directories(const std::string& path);
void remove_tree(const std::string& path);

}  // namespace fairlead_test
