// The project tree and the paths built on it.
#include <sys/stat.h>
#include <unistd.h>

#include "adp/adp_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::exists;
using fairlead_test::Fault;
using fairlead_test::put_file;
using fairlead_test::spelled;

class ProjectTest : public fairlead_test::AdapterTest {
 protected:
  slash_t* path(const char* text) {
    snprintf(text_, sizeof text_, "%s", text);
    SlashClear(&slash_);
    SlashAnalysis(&slash_, text_);
    return &slash_;
  }

  void TearDown() override {
    SlashClear(&slash_);
    AdapterTest::TearDown();
  }

  slash_t slash_{};
  char text_[512];
};

TEST_F(ProjectTest, projects_are_the_visible_entries) {
  fairlead_test::make_directories("/prj/net");
  fairlead_test::make_directories("/prj/.hidden");
  EXPECT_EQ("{\"net\":\"/prj/net\"}", spelled(ProjectList()));
  fairlead_test::remove_tree("/prj/net");
  put_file("/prj/file", "");
  EXPECT_EQ("{\"file\":\"/prj/file\"}", spelled(ProjectList()));
}

TEST_F(ProjectTest, a_project_path_is_built_in_the_callers_buffer_or_a_static_one) {
  char buffer[8];
  EXPECT_STREQ("/prj/ne", ProjectPath("network", buffer, sizeof buffer));
  EXPECT_STREQ("/prj/net", ProjectPath("net", nullptr, 10));
  EXPECT_STREQ("/prj/net", ProjectPath("net", buffer, 0));
  EXPECT_EQ(nullptr, ProjectPath(nullptr, nullptr, 0));
}

TEST_F(ProjectTest, without_a_buffer_each_function_has_one_of_256_bytes_of_its_own) {
  put_file("/prj/net/wan.adp", "");
  put_file("/prj/net/hosts", "");
  ASSERT_EQ(1, DynAdpCreate("lan", "net/wan"));
  const char* project = ProjectPath("net", nullptr, 0);
  const char* adapter = ProjectAdpPath(path("net/wan"), nullptr, 0);
  const char* file = ProjectOscPath(nullptr, 0, "net", "hosts");
  const char* folder = ProjectVarPath(nullptr, 0, "x", nullptr);
  const char* bound = DynAdpPath(path("lan"), nullptr, 0);
  EXPECT_STREQ("/prj/net", project);
  EXPECT_STREQ("/prj/net/wan.adp", adapter);
  EXPECT_STREQ("/prj/net/hosts", file);
  EXPECT_STREQ("/tmp/.var/x", folder);
  EXPECT_STREQ("/prj/net/wan.adp", bound);
  EXPECT_EQ(project, ProjectPath(std::string(300, 'p').c_str(), nullptr, 0));
  EXPECT_EQ("/prj/" + std::string(250, 'p'), project);
}

TEST_F(ProjectTest, adapters_are_listed_by_an_extension_anywhere_in_the_name) {
  put_file("/prj/net/wan.adp.old", "");
  EXPECT_EQ("{\"net/wan\":\"/prj/net/wan.adp.old\"}", spelled(ProjectAdpList("net")));
  put_file("/prj/led/red.ash", "");
  EXPECT_EQ("{\"led/red\":\"/prj/led/red.ash\"}", spelled(ProjectAdpList("led")));
  put_file("/prj/led/.hidden.adp", "");
  put_file("/prj/led/readme", "");
  EXPECT_EQ("{\"led/red\":\"/prj/led/red.ash\"}", spelled(ProjectAdpList("led")));
}

TEST_F(ProjectTest, a_module_extension_is_looked_for_before_a_scripts) {
  put_file("/prj/net/a.ash.adp", "");
  EXPECT_EQ("{\"net/a.ash\":\"/prj/net/a.ash.adp\"}", spelled(ProjectAdpList("net")));
}

TEST_F(ProjectTest, null_lists_the_adapters_of_all_projects) {
  EXPECT_EQ("{}", spelled(ProjectAdpList(nullptr)));
  put_file("/prj/net/wan.adp", "");
  put_file("/prj/led/red.ash", "");
  vessel_t* all = ProjectAdpList(nullptr);
  EXPECT_EQ(2, VesselCount(all));
  EXPECT_STREQ("/prj/net/wan.adp", VesselGetS(all, "net/wan"));
  EXPECT_STREQ("/prj/led/red.ash", VesselGetS(all, "led/red"));
  TalkFree(all);
}

TEST_F(ProjectTest, a_missing_project_lists_null) {
  EXPECT_EQ(nullptr, ProjectAdpList("none"));
  EXPECT_EQ(nullptr, ProjectCfgList("none"));
}

TEST_F(ProjectTest, configurations_are_listed_alike) {
  put_file("/prj/net/wan.cfg.orig", "");
  put_file("/prj/net/wan.adp", "");
  EXPECT_EQ("{\"net/wan\":\"/prj/net/wan.cfg.orig\"}", spelled(ProjectCfgList("net")));
  EXPECT_EQ("{\"net/wan\":\"/prj/net/wan.cfg.orig\"}", spelled(ProjectCfgList(nullptr)));
}

TEST_F(ProjectTest, a_module_is_preferred_to_a_script) {
  char buffer[256];
  put_file("/prj/net/wan.ash", "");
  EXPECT_STREQ("/prj/net/wan.ash", ProjectAdpPath(path("net//wan"), buffer, sizeof buffer));
  put_file("/prj/net/wan.adp", "");
  EXPECT_STREQ("/prj/net/wan.adp", ProjectAdpPath(path("net/wan"), nullptr, 0));
  EXPECT_EQ(nullptr, ProjectAdpPath(path("net/none"), buffer, sizeof buffer));
  EXPECT_EQ(nullptr, ProjectAdpPath(nullptr, buffer, sizeof buffer));
}

TEST_F(ProjectTest, other_files_are_found_unless_they_are_folders) {
  char buffer[256];
  put_file("/prj/net/keys/wan.pem", "");
  EXPECT_STREQ("/prj/net/keys/wan.pem",
               ProjectOscPath(buffer, sizeof buffer, "net", "keys/%s.pem", "wan"));
  EXPECT_EQ(nullptr, ProjectOscPath(buffer, sizeof buffer, "net", "keys"));
  EXPECT_EQ(nullptr, ProjectOscPath(buffer, sizeof buffer, "net", "none"));
  EXPECT_EQ(nullptr, ProjectOscPath(buffer, sizeof buffer, nullptr, "keys"));
}

TEST_F(ProjectTest, a_runtime_folder_is_made_with_mode_0770) {
  const mode_t former = umask(0);
  EXPECT_STREQ("/tmp/.var/x", ProjectVarPath(nullptr, 0, "x", nullptr));
  umask(former);
  struct stat status;
  ASSERT_EQ(0, stat("/tmp/.var/x", &status));
  EXPECT_EQ(0770U, status.st_mode & 0777);
}

TEST_F(ProjectTest, a_runtime_path_takes_a_format) {
  char buffer[256];
  EXPECT_STREQ("/tmp/.var/x/a7", ProjectVarPath(buffer, sizeof buffer, "x", "%s%d", "a", 7));
  EXPECT_TRUE(exists("/tmp/.var/x"));
}

TEST_F(ProjectTest, a_file_in_the_place_of_a_runtime_folder_goes) {
  put_file("/tmp/.var/x", "file");
  EXPECT_NE(nullptr, ProjectVarPath(nullptr, 0, "x", nullptr));
  EXPECT_EQ(0, dir_sum("/tmp/.var/x"));
}

TEST_F(ProjectTest, a_runtime_folder_that_cannot_be_made_gives_null) {
  EXPECT_EQ(nullptr, ProjectVarPath(nullptr, 0, "a/b", nullptr));
  EXPECT_EQ(nullptr, ProjectVarPath(nullptr, 0, nullptr, nullptr));
}

TEST_F(ProjectTest, a_file_among_the_projects_adds_nothing_to_a_listing) {
  put_file("/prj/net/wan.adp", "");
  put_file("/prj/readme", "");
  EXPECT_EQ("{\"net/wan\":\"/prj/net/wan.adp\"}", spelled(ProjectAdpList(nullptr)));
}

TEST_F(ProjectTest, without_a_project_tree_the_listing_of_all_is_empty) {
  Fault fault(Call::kOpendir, {.error = ENOENT});
  EXPECT_EQ("{}", spelled(ProjectAdpList(nullptr)));
}

TEST_F(ProjectTest, null_arguments_name_no_file) {
  put_file("/prj/net/hosts", "");
  EXPECT_EQ(nullptr, ProjectOscPath(nullptr, 0, nullptr, "hosts"));
  EXPECT_EQ(nullptr, ProjectOscPath(nullptr, 0, "net", nullptr));
  EXPECT_EQ(nullptr, ProjectVarPath(nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(nullptr, DynAdpPath(nullptr, nullptr, 0));
}

TEST_F(ProjectTest, a_link_to_nowhere_in_the_place_of_a_runtime_folder_gives_null) {
  ASSERT_EQ(0, symlink("/tmp/.var/nowhere", "/tmp/.var/service"));
  EXPECT_EQ(nullptr, ProjectVarPath(nullptr, 0, "service", nullptr));
}

}  // namespace
