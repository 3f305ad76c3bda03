// A project's default configuration, installed and removed.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "config_support.h"
#include "fairlead/misc.h"
#include "support/capture.h"
#include "support/child.h"
#include "support/syslog.h"

namespace {

using fairlead_test::exists;
using fairlead_test::file_content;
using fairlead_test::put_file;

class ConfigInstallTest : public fairlead_test::ConfigTest {
 protected:
  template <class Action>
  static std::string printed(Action action) {
    return fairlead_test::capture(action).out;
  }
};

TEST_F(ConfigInstallTest, files_are_copied_and_told_on_the_console) {
  put_file("/prj/net/wan.cfg", "{\"mtu\":\"1500\"}");
  const std::string out = printed([] { EXPECT_EQ(1, ConfigInstall("net")); });
  EXPECT_EQ("{\"mtu\":\"1500\"}", file_content("/etc/config/net/wan.cfg"));
  EXPECT_EQ("info: install a config /prj/net/wan.cfg to /etc/config/net/wan.cfg by net\n", out);
  EXPECT_FALSE(exists("/etc/config/version"));
}

TEST_F(ConfigInstallTest, syslog_is_told_as_well) {
  fairlead_test::Syslog daemon;
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_SYSLOG, 6));
  put_file("/prj/net/wan.cfg", "{}");
  printed([] {
    EXPECT_EQ(1, ConfigInstall("net"));
    EXPECT_EQ(1, ConfigUninstall("net"));
  });
  EXPECT_NE("", daemon.wait_for("daemon.info test: install a config /prj/net/wan.cfg to "
                                "/etc/config/net/wan.cfg by net\n"));
  EXPECT_NE("", daemon.wait_for("test: uninstall a config /etc/config/net/wan.cfg by net\n"));
  GlogClose();
}

TEST_F(ConfigInstallTest, a_missing_folder_is_made_with_mode_0770) {
  put_file("/prj/net/wan.cfg", "{}");
  const mode_t former = umask(0);
  printed([] { EXPECT_EQ(1, ConfigInstall("net")); });
  umask(former);
  struct stat status;
  ASSERT_EQ(0, stat("/etc/config/net", &status));
  EXPECT_EQ(0770U, status.st_mode & 07777U);
}

TEST_F(ConfigInstallTest, an_existing_file_is_overwritten) {
  put_file("/prj/net/wan.cfg", "{}");
  put_file("/etc/config/net/wan.cfg", "{\"long\":\"content\"}");
  printed([] { EXPECT_EQ(1, ConfigInstall("net")); });
  EXPECT_EQ("{}", file_content("/etc/config/net/wan.cfg"));
}

TEST_F(ConfigInstallTest, two_files_of_one_stem_install_one_configuration) {
  put_file("/prj/net/wan.cfg", "{}");
  put_file("/prj/net/wan.cfg.orig", "{}");
  printed([] { EXPECT_EQ(1, ConfigInstall("net")); });
  EXPECT_EQ(1, dir_sum("/etc/config/net"));
  EXPECT_TRUE(exists("/etc/config/net/wan.cfg"));
}

TEST_F(ConfigInstallTest, nothing_to_install_gives_0) {
  EXPECT_EQ(0, ConfigInstall(nullptr));
  EXPECT_EQ(0, ConfigInstall("none"));
  fairlead_test::make_directories("/prj/empty");
  EXPECT_EQ(0, ConfigInstall("empty"));
}

TEST_F(ConfigInstallTest, a_folder_that_cannot_be_made_skips_its_files_silently) {
  put_file("/prj/net/wan.cfg", "{}");
  put_file("/etc/config/net", "a file");
  unlink("/etc/config/net");
  ASSERT_EQ(0, symlink("/nowhere/at/all", "/etc/config/net"));
  EXPECT_EQ("", printed([] { EXPECT_EQ(0, ConfigInstall("net")); }));
}

TEST_F(ConfigInstallTest, uninstall_removes_files_and_folder) {
  put_file("/etc/config/net/wan.cfg", "{}");
  put_file("/etc/config/net/.wan.cfg.saving", "left by a kill");
  const std::string out = printed([] { EXPECT_EQ(1, ConfigUninstall("net")); });
  EXPECT_FALSE(exists("/etc/config/net"));
  EXPECT_EQ("info: uninstall a config /etc/config/net/wan.cfg by net\n", out);
}

// It is about to be renamed: in its place would be that of another save, half written.
TEST_F(ConfigInstallTest, uninstall_leaves_the_temporary_of_a_living_save) {
  put_file("/etc/config/net/wan.cfg", "{}");
  fairlead_test::Gate saving;
  fairlead_test::Child save([&saving] {
    EXPECT_GE(lock_open("/etc/config/net/.wan.cfg.saving", O_RDWR | O_CREAT, 0660, 0), 0);
    saving.open();
    pause();
    return 0;
  });
  ASSERT_TRUE(saving.wait());
  printed([] { EXPECT_EQ(0, ConfigUninstall("net")); });
  EXPECT_TRUE(exists("/etc/config/net/.wan.cfg.saving"));
  save.send(SIGKILL);
  save.wait();
  EXPECT_EQ(1, ConfigUninstall("net"));
}

TEST_F(ConfigInstallTest, a_hidden_file_keeps_the_folder) {
  put_file("/etc/config/net/wan.cfg", "{}");
  put_file("/etc/config/net/.mine", "x");
  printed([] { EXPECT_EQ(0, ConfigUninstall("net")); });
  EXPECT_FALSE(exists("/etc/config/net/wan.cfg"));
  EXPECT_TRUE(exists("/etc/config/net/.mine"));
}

TEST_F(ConfigInstallTest, a_sub_folder_survives) {
  put_file("/etc/config/net/deep/x.cfg", "{}");
  printed([] { EXPECT_EQ(0, ConfigUninstall("net")); });
  EXPECT_TRUE(exists("/etc/config/net/deep/x.cfg"));
}

TEST_F(ConfigInstallTest, uninstall_of_nothing_gives_0) {
  EXPECT_EQ(0, ConfigUninstall(nullptr));
  EXPECT_EQ(0, ConfigUninstall("none"));
}

// Cut, the path would name another folder, such as the store itself.
TEST_F(ConfigInstallTest, uninstall_of_a_path_that_is_too_long_is_refused) {
  fairlead_test::make_directories("/etc/config/net");
  for (const std::string& name : {std::string(300, '/') + "x", "net" + std::string(300, '/') + "x",
                                  "net" + std::string(238, '/') + ".hidden"}) {
    errno = 0;
    EXPECT_EQ(0, ConfigUninstall(name.c_str())) << name.size();
    EXPECT_EQ(ENAMETOOLONG, errno);
  }
  EXPECT_TRUE(fairlead_test::exists("/etc/config/net"));
}

TEST_F(ConfigInstallTest, uninstall_of_no_single_project_is_refused) {
  put_file("/etc/config/wan.cfg", "{}");
  put_file("/etc/precious", "");
  for (const char* name : {"", ".", "..", "/", "net/..", "../config", "a/./b"}) {
    errno = 0;
    EXPECT_EQ(0, ConfigUninstall(name)) << name;
    EXPECT_EQ(EINVAL, errno) << name;
  }
  EXPECT_TRUE(fairlead_test::exists("/etc/config/wan.cfg"));
  EXPECT_TRUE(fairlead_test::exists("/etc/precious"));
  fairlead_test::remove_tree("/etc/precious");
}

TEST_F(ConfigInstallTest, install_copies_no_device) {
  fairlead_test::make_directories("/prj/net");
  ASSERT_EQ(0, symlink("/dev/zero", "/prj/net/wan.cfg"));
  EXPECT_EQ(1, ConfigInstall("net"));
  EXPECT_FALSE(fairlead_test::exists("/etc/config/net/wan.cfg"));
}

}  // namespace
