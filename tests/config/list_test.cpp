// Listings of the configuration store.
#include <unistd.h>

#include "config_support.h"
#include "support/child.h"
#include "support/faults.h"
#include "talk/owned_talk.h"

namespace {

using fairlead::OwnedTalk;
using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::put_file;

class ConfigListTest : public fairlead_test::ConfigTest {
 protected:
  static std::string listed(vessel_t* listing) {
    char* text = listing ? VesselString(listing) : nullptr;
    const std::string result = text ? text : "<null>";
    free(text);
    TalkFree(listing);
    return result;
  }
};

TEST_F(ConfigListTest, files_and_folders_are_listed_as_a_tree) {
  put_file("/etc/config/net/wan.cfg", "{}");
  EXPECT_EQ("{\"net\":{\"wan\":\"/etc/config/net/wan.cfg\"}}", listed(ConfigList(nullptr)));
  EXPECT_EQ("{\"wan\":\"/etc/config/net/wan.cfg\"}", listed(ConfigList("net")));
}

TEST_F(ConfigListTest, hidden_names_and_other_files_are_left_out) {
  for (const char* name : {".a.cfg", ".a.cfg.saving", "version", "notes.txt"})
    put_file(std::string("/etc/config/") + name, "x");
  EXPECT_EQ("{}", listed(ConfigList(nullptr)));
}

TEST_F(ConfigListTest, the_extension_counts_anywhere_in_the_name) {
  put_file("/etc/config/a.cfg.bak", "{}");
  EXPECT_EQ("{\"a\":\"/etc/config/a.cfg.bak\"}", listed(ConfigList(nullptr)));
}

TEST_F(ConfigListTest, two_files_of_one_stem_are_one_member) {
  put_file("/etc/config/a.cfg", "{}");
  put_file("/etc/config/a.cfg.bak", "{}");
  vessel_t* listing = ConfigList(nullptr);
  EXPECT_EQ(1, VesselCount(listing));
  TalkFree(listing);
}

TEST_F(ConfigListTest, an_empty_folder_is_an_empty_object) {
  fairlead_test::make_directories("/etc/config/empty");
  EXPECT_EQ("{\"empty\":{}}", listed(ConfigList(nullptr)));
}

TEST_F(ConfigListTest, what_cannot_be_opened_gives_null) {
  EXPECT_EQ("<null>", listed(ConfigList("none")));
  EXPECT_EQ("<null>", listed(config_list_all("/etc/config/none")));
  EXPECT_EQ(nullptr, config_list_all(nullptr));
}

TEST_F(ConfigListTest, a_dangling_link_is_left_out) {
  ASSERT_EQ(0, symlink("nowhere", "/etc/config/x.cfg"));
  EXPECT_EQ("{}", listed(ConfigList(nullptr)));
}

TEST_F(ConfigListTest, a_link_to_another_folder_is_a_folder) {
  put_file("/tmp/elsewhere/a.cfg", "{}");
  fairlead_test::make_directories("/etc/config/net");
  ASSERT_EQ(0, symlink("/tmp/elsewhere", "/etc/config/net/link"));
  EXPECT_EQ("{\"net\":{\"link\":{\"a\":\"/etc/config/net/link/a.cfg\"}}}",
            listed(ConfigList(nullptr)));
}

TEST_F(ConfigListTest, a_link_that_leads_back_is_left_out) {
  ASSERT_EQ(0, symlink(".", "/etc/config/self"));
  put_file("/etc/config/net/a.cfg", "{}");
  ASSERT_EQ(0, symlink("..", "/etc/config/net/up"));
  EXPECT_EQ("{\"net\":{\"a\":\"/etc/config/net/a.cfg\"}}", listed(ConfigList(nullptr)));
}

// Followed to the kernel's 40th link, these would be listed 2 to the power of 40 times.
TEST_F(ConfigListTest, two_links_that_lead_back_are_no_work_without_end) {
  ASSERT_EQ(0, symlink(".", "/etc/config/one"));
  ASSERT_EQ(0, symlink("/etc/config", "/etc/config/two"));
  const auto ended = fairlead_test::run_child([] {
    alarm(10);
    return listed(ConfigList(nullptr)) == "{}" ? 0 : 1;
  });
  EXPECT_EQ(0, ended.status) << ended.signal;
}

TEST_F(ConfigListTest, a_listing_is_whole_or_null) {
  for (const char* file : {"/etc/config/lan.cfg", "/etc/config/p/a.cfg", "/etc/config/p/q/b.cfg"})
    put_file(file, "{}");
  const OwnedTalk whole(ConfigList(nullptr));
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    const OwnedTalk listing(each.run([] { return ConfigList(nullptr); }));
    const int error = errno;
    EXPECT_EQ(!each.fired(), listing != nullptr) << each.nth();
    if (listing) {
      EXPECT_TRUE(TalkEqual(whole.get(), listing.get()));
    } else {
      EXPECT_EQ(ENOMEM, error) << each.nth();
    }
  }
  EXPECT_GT(failures, 10);
}

TEST_F(ConfigListTest, paths_of_more_than_255_characters_are_left_out) {
  const std::string folder = "/etc/config/" + std::string(120, 'a') + "/" + std::string(110, 'b');
  put_file(folder + "/fits.cfg", "{}");
  put_file(folder + "/" + std::string(30, 'c') + ".cfg", "{}");
  const OwnedTalk listing(config_list_all(folder.c_str()));
  ASSERT_NE(nullptr, listing);
  EXPECT_EQ(1, VesselCount(listing.get()));
  EXPECT_NE(nullptr, VesselFind(listing.get(), "fits"));
}

TEST_F(ConfigListTest, a_path_that_is_too_long_lists_no_other_file) {
  const std::string folder = "/etc/config/" + std::string(120, 'a') + "/" + std::string(117, 'b');
  ASSERT_EQ(250U, folder.size());
  put_file(folder + "/abc.cfg", "{}");
  put_file(folder + "/abc.", "{}");  // what the path is when it is cut
  EXPECT_EQ("{}", listed(config_list_all(folder.c_str())));
}

}  // namespace
