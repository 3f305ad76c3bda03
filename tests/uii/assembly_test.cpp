// The text of an identifier from its pieces.
#include <cerrno>
#include <string>

#include "support/device_test.h"

#include "fairlead/uii.h"

namespace {

class UiiAssemblyTest : public fairlead_test::DeviceTest {
 protected:
  std::string assemble(const char* object, const char* interface, const char* parameter,
                       int size = sizeof buffer_) {
    memset(buffer_, '#', sizeof buffer_);
    EXPECT_EQ(buffer_, UiiAssembly(object, interface, parameter, buffer_, size));
    EXPECT_EQ(std::string(sizeof buffer_ - static_cast<size_t>(size), '#'),
              std::string(buffer_ + size, sizeof buffer_ - static_cast<size_t>(size)));
    return buffer_;
  }

  char buffer_[256];
};

TEST_F(UiiAssemblyTest, joins_what_is_there) {
  EXPECT_EQ("wan", assemble("wan", nullptr, nullptr));
  EXPECT_EQ("wan.restart", assemble("wan", "restart", nullptr));
  EXPECT_EQ("wan.restart[x,y]", assemble("wan", "restart", "x,y"));
}

TEST_F(UiiAssemblyTest, parameters_without_an_interface_are_dropped) {
  EXPECT_EQ("wan", assemble("wan", nullptr, "x"));
}

TEST_F(UiiAssemblyTest, empty_pieces_are_still_there) { EXPECT_EQ(".[]", assemble("", "", "")); }

TEST_F(UiiAssemblyTest, an_interface_has_at_most_63_characters) {
  const std::string fits(63, 'i');
  EXPECT_EQ("o." + fits + "[p]", assemble("o", fits.c_str(), "p"));
  EXPECT_EQ("o." + fits + "[p]", assemble("o", (fits + "j").c_str(), "p"));
}

TEST_F(UiiAssemblyTest, every_piece_is_cut_where_the_buffer_ends) {
  const std::string whole = "wan.restart[x,y]";
  for (int size = 1; size <= 17; ++size)
    EXPECT_EQ(whole.substr(0, static_cast<size_t>(size) - 1),
              assemble("wan", "restart", "x,y", size));
}

TEST_F(UiiAssemblyTest, without_a_buffer_the_shared_one_is_used) {
  char* text = UiiAssembly("wan", "up", nullptr, nullptr, 256);
  EXPECT_STREQ("wan.up", text);
  EXPECT_EQ(text, UiiAssembly("lan", nullptr, nullptr, buffer_, 0));
  EXPECT_EQ(text, UiiAssembly("lan", nullptr, nullptr, buffer_, -1));
  EXPECT_STREQ("lan", text);
}

TEST_F(UiiAssemblyTest, the_shared_buffer_holds_4095_characters) {
  const std::string object(5000, 'o');
  EXPECT_EQ(object.substr(0, 4095), UiiAssembly(object.c_str(), "up", "p", nullptr, 0));
}

TEST_F(UiiAssemblyTest, the_object_may_stand_in_the_buffer) {
  strcpy(buffer_, "#wan");
  EXPECT_STREQ("wan.up[x]", UiiAssembly(buffer_ + 1, "up", "x", buffer_, sizeof buffer_));
  EXPECT_STREQ("wan.up[x].y", UiiAssembly(buffer_, "y", nullptr, buffer_, sizeof buffer_));
  EXPECT_STREQ("wan.", UiiAssembly(buffer_, "y", nullptr, buffer_, 5));
  char* const shared = UiiAssembly("lan", nullptr, nullptr, nullptr, 0);
  EXPECT_STREQ("lan.up", UiiAssembly(shared, "up", nullptr, nullptr, 0));
}

TEST_F(UiiAssemblyTest, refuses_a_null_object) {
  errno = 0;
  EXPECT_EQ(nullptr, UiiAssembly(nullptr, "up", nullptr, buffer_, sizeof buffer_));
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
