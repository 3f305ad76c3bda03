// Many processes on one configuration file.
#include <cstring>
#include <string>

#include "config_support.h"
#include "support/stress.h"

namespace {

using fairlead_test::Crowd;

class ConfigStressTest : public fairlead_test::ConfigTest {
 protected:
  // Every document a writer makes tells its own length, so that a torn one gives itself away.
  static vessel_t* make_document(int writer, int round) {
    vessel_t* document = VesselCreate();
    const std::string filler(static_cast<size_t>((writer * 997 + round * 131) % 9000),
                             static_cast<char>('a' + writer));
    VesselSetS(document, "length", std::to_string(filler.size()).c_str());
    VesselSetS(document, "filler", filler.c_str());
    return document;
  }

  static bool is_whole(vessel_t* document) {
    const char* length = VesselGetS(document, "length");
    const char* filler = VesselGetS(document, "filler");
    return length && filler && std::to_string(strlen(filler)) == length &&
           strspn(filler, std::string(1, filler[0]).c_str()) == strlen(filler);
  }

  static void write(int writer, int round) {
    vessel_t* document = make_document(writer, round);
    errno = 0;
    EXPECT_TRUE(ConfigSet("busy", nullptr, nullptr, document) == 1 || errno == EBUSY) << errno;
    TalkFree(document);
  }

  static void read(int, int) {
    errno = 0;
    vessel_t* document = ConfigGet("busy", nullptr, nullptr);
    EXPECT_TRUE(document ? is_whole(document) : errno == EBUSY) << errno;
    TalkFree(document);
  }
};

TEST_F(ConfigStressTest, no_reader_sees_a_document_that_no_writer_wrote) {
  write(0, 1);
  Crowd crowd;
  crowd.add(20, write);
  crowd.add(20, read);
  crowd.wait();
}

// Two changes of members are each a read and a write, and one of them may be lost: never a member
// that nobody changes, and never so that a member has a value that nobody gave it.
TEST_F(ConfigStressTest, changes_of_members_lose_nothing_but_each_other) {
  ASSERT_EQ(1, set("busy", nullptr, "{\"kept\":\"for good\",\"last\":{\"kept\":\"too\"}}"));
  Crowd crowd;
  crowd.add(12, [](int writer, int round) {
    const std::string member = "last/" + std::string(1, static_cast<char>('a' + writer));
    const std::string value = member + std::string(static_cast<size_t>(round % 300), '.');
    errno = 0;
    const int result = round % 5 == 4 ? ConfigSet("busy", nullptr, member.c_str(), nullptr)
                                      : ConfigSetS("busy", nullptr, member.c_str(), value.c_str());
    // Somebody else's change may have taken the member away before.
    EXPECT_TRUE(result == 1 || errno == EBUSY || round % 5 == 4) << errno;
  });
  crowd.add(8, [](int reader, int) {
    errno = 0;
    vessel_t* document = ConfigGet("busy", nullptr, nullptr);
    if (!document && errno == EBUSY) return;
    EXPECT_STREQ("for good", VesselGetS(document, "kept"));
    vessel_t* last = VesselGetX(document, "last");
    EXPECT_STREQ("too", VesselGetS(last, "kept"));
    const std::string name(1, static_cast<char>('a' + reader));
    const char* value = VesselGetS(last, name.c_str());
    const std::string text = value ? value : "last/" + name;
    EXPECT_EQ(0u, text.rfind("last/" + name, 0)) << text;
    EXPECT_EQ(std::string::npos, text.find_first_not_of('.', 6)) << text;
    TalkFree(document);
  });
  crowd.wait();
  EXPECT_EQ("for good", get("busy", "kept"));
}

// The last file that is deleted takes its folder with it, while others are about to save in it.
TEST_F(ConfigStressTest, objects_of_a_folder_that_comes_and_goes_are_set_and_deleted) {
  Crowd crowd;
  crowd.add(4, [](int writer, int) {
    const std::string name = "net/" + std::to_string(writer);
    errno = 0;
    ASSERT_EQ(1, ConfigSetS(name.c_str(), nullptr, "a", "1")) << strerror(errno);
    errno = 0;
    ASSERT_EQ(1, ConfigSet(name.c_str(), nullptr, nullptr, nullptr)) << strerror(errno);
  });
  crowd.wait();
  EXPECT_FALSE(fairlead_test::exists("/etc/config/net"));
}

}  // namespace
