// The channel: where its settings come from, and under which name it shows in syslog.
#include "log_support.h"
#include "support/faults.h"
#include "support/syslog.h"

namespace {

using namespace fairlead_test;
using std::string;

class ChannelTest : public LogTest {
 protected:
  // Whether a message of that level is written.
  static bool writes(uint32_t level) {
    const Captured shown = print(level, "text");
    return shown.out + shown.err != "";
  }
};

// ---- Settings ----

TEST_F(ChannelTest, without_settings_info_goes_to_syslog_only) {
  Syslog daemon;
  const Ended child = run_child([] {
    LogWrite(7, "source", 1, "some debug");
    LogWrite(6, "source", 1, "some info");
  });
  EXPECT_NE("", daemon.wait_for(": some info"));
  EXPECT_EQ(string::npos, daemon.text().find("some debug"));
  EXPECT_EQ("", child.out + child.err);
}

TEST_F(ChannelTest, the_store_gives_mode_and_threshold) {
  const Ended child = run_child([] {
    store_setting("log_mode", LOG_MODE_CONSOLE | LOG_MODE_WHERE);
    store_setting("log_level", 4);
    LogWrite(5, "source", 1, "filtered");
    LogWrite(4, "source", 1, "written");
    EXPECT_TRUE(GlogOpen("tester", 0, 0));
    LogWrite(5, "source", 1, "filtered");
    LogWrite(3, "source", 2, "again");
  });
  EXPECT_EQ(0u, child.err.find("warn: written{"));
  EXPECT_TRUE(ends_with(child.err, "/source/2}\n"));
  EXPECT_EQ(string::npos, child.err.find("filtered"));
}

TEST_F(ChannelTest, a_change_by_another_process_shows_at_the_next_message) {
  const Ended child = run_child([] {
    const auto set_elsewhere = [](const char* name, uint32_t value) {
      EXPECT_EQ(1, run_child([=] { return store_setting(name, value); }).status);
    };
    EXPECT_FALSE(writes(7));  // there is no level in the store yet
    set_elsewhere("log_level", 7);
    EXPECT_TRUE(writes(7));
    set_elsewhere("log_level", 2);
    EXPECT_FALSE(writes(3));

    LogWrite(2, "source", 1, "to syslog");
    set_elsewhere("log_mode", LOG_MODE_CONSOLE);
    LogWrite(2, "source", 1, "to the console");
  });
  EXPECT_EQ("alert: to the console\n", child.err);
}

TEST_F(ChannelTest, own_settings_count_more_than_the_store) {
  run_child([] {
    store_setting("log_mode", LOG_MODE_SYSLOG);
    store_setting("log_level", 1);
    EXPECT_TRUE(GlogOpen("tester", LOG_MODE_CONSOLE, 7));
    EXPECT_EQ("debug: text\n", capture([] { LogWrite(7, "source", 1, "text"); }).out);
    EXPECT_TRUE(GlogOpen("tester", 0, 0));  // not given: they stay
    EXPECT_EQ("debug: text\n", capture([] { LogWrite(7, "source", 1, "text"); }).out);
    EXPECT_TRUE(GlogOpen("tester", 0, 3));
    EXPECT_EQ("", capture([] { LogWrite(4, "source", 1, "text"); }).err);
  });
}

TEST_F(ChannelTest, own_settings_count_more_than_those_that_were_found_before) {
  run_child([] {
    store_setting("log_mode", LOG_MODE_SYSLOG);
    store_setting("log_level", 1);
    EXPECT_TRUE(GlogOpen("tester", 0, 0));
    EXPECT_TRUE(GlogOpen("tester", LOG_MODE_CONSOLE, 7));
    EXPECT_EQ("debug: text\n", capture([] { LogWrite(7, "source", 1, "text"); }).out);
    EXPECT_TRUE(GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 6));
    EXPECT_EQ("", capture([] { LogWrite(7, "source", 1, "text"); }).out);
    EXPECT_TRUE(ends_with(capture([] { LogWrite(6, "source", 1, "text"); }).out, "/source/1}\n"));
  });
}

TEST_F(ChannelTest, close_goes_back_to_the_store) {
  run_child([] {
    store_setting("log_mode", LOG_MODE_CONSOLE | LOG_MODE_WHERE);
    store_setting("log_level", 2);
    GlogOpen("tester", LOG_MODE_CONSOLE, 7);
    EXPECT_EQ("debug: text\n", capture([] { LogWrite(7, "source", 1, "text"); }).out);
    GlogClose();
    EXPECT_FALSE(writes(3));
    EXPECT_TRUE(ends_with(capture([] { LogWrite(2, "source", 1, "text"); }).err, "/source/1}\n"));
  });
}

// As the first name, an odd number of bytes, moves all later values off their alignment.
TEST_F(ChannelTest, a_setting_that_is_not_aligned_is_read) {
  run_child([] {
    GvalueSet(nullptr, "odd", "123", 3);
    store_setting("log_level", 7);
    EXPECT_TRUE(writes(7));
  });
}

TEST_F(ChannelTest, a_setting_of_less_than_four_bytes_does_not_count) {
  run_child([] {
    GvalueSet(nullptr, "log_level", "\1\0\0", 3);
    EXPECT_TRUE(writes(6));
    EXPECT_FALSE(writes(7));
  });
}

TEST_F(ChannelTest, a_setting_that_grows_to_four_bytes_counts) {
  run_child([] {
    GvalueSet(nullptr, "log_level", "\7\0\0", 3);
    EXPECT_FALSE(writes(7));
    store_setting("log_level", 7);
    EXPECT_TRUE(writes(7));
  });
}

// The old place would be read for ever.
TEST_F(ChannelTest, a_setting_that_grows_while_it_is_looked_for_is_read_in_its_new_place) {
  for (int round = 0; round < 60; ++round) {
    remove_tree("/tmp/.var/gvalue");
    Gate small;
    Child setter([&small] {
      EXPECT_TRUE(small.wait());
      return store_setting("log_level", 2) - 1;
    });
    const Ended logger = run_child([&small] {
      GvalueSet(nullptr, "log_level", "\6\0\0", 3);
      small.open();
      while (GvalueSize(nullptr, "log_level") < 4)
        for (int message = 0; message < 500; ++message) LogWrite(7, "source", 1, "filtered");
      return writes(3);
    });
    EXPECT_EQ(0, setter.wait().status);
    ASSERT_EQ(0, logger.status) << "in round " << round;
  }
}

TEST_F(ChannelTest, a_setting_is_found_whatever_was_filtered_and_set_before_it) {
  run_child([] {
    EXPECT_FALSE(writes(7));
    GvalueSet(nullptr, "other", "123", 3);
    EXPECT_FALSE(writes(7));
    store_setting("log_level", 7);
    EXPECT_TRUE(writes(7));
  });
}

TEST_F(ChannelTest, a_store_that_becomes_possible_is_found) {
  run_child([] {
    remove_tree("/tmp/.var");
    EXPECT_FALSE(writes(7));
    make_directories("/tmp/.var");
    run_child([] { store_setting("log_level", 7); });
    EXPECT_TRUE(writes(7));
  });
}

TEST_F(ChannelTest, without_a_store_the_defaults_apply_and_errno_stays) {
  remove_tree("/tmp/.var");
  for (uint32_t level : {6u, 7u}) {
    errno = ENOTTY;
    LogWrite(level, "source", 1, "text");
    EXPECT_EQ(ENOTTY, errno);
  }
  EXPECT_TRUE(writes(6));
  EXPECT_FALSE(writes(7));
  EXPECT_EQ(1, GlogOpen("tester", 0, 0));
  EXPECT_FALSE(exists("/tmp/.var"));
}

TEST_F(ChannelTest, a_broken_store_does_no_harm) {
  put_file("/tmp/.var/gvalue/default", string(500, '\xFF'));
  run_child([] {
    errno = ENOTTY;
    LogWrite(7, "source", 1, "text");
    EXPECT_EQ(ENOTTY, errno);
    EXPECT_FALSE(writes(7));
    EXPECT_EQ(1, store_setting("log_level", 7));
    EXPECT_TRUE(writes(7));
  });
}

// ---- Identity ----

TEST_F(ChannelTest, messages_carry_the_identity_and_the_facility_daemon) {
  Syslog daemon;
  EXPECT_EQ(1, GlogOpen("first", LOG_MODE_SYSLOG, 7));
  LogWrite(3, "source", 1, "message one");
  EXPECT_TRUE(ends_with(daemon.wait_for("message one"), " daemon.err first: message one"));
  EXPECT_EQ(1, GlogOpen("second", LOG_MODE_SYSLOG, 7));
  LogWrite(3, "source", 1, "message two");
  EXPECT_TRUE(ends_with(daemon.wait_for("message two"), " daemon.err second: message two"));
}

TEST_F(ChannelTest, the_identity_is_copied) {
  Syslog daemon;
  string ident = "tester";
  GlogOpen(ident.c_str(), LOG_MODE_SYSLOG, 7);
  ident = "changed";
  LogWrite(3, "source", 1, "message");
  EXPECT_TRUE(ends_with(daemon.wait_for("message"), " tester: message"));
}

TEST_F(ChannelTest, without_a_known_mode_syslog_is_opened) {
  Syslog daemon;
  run_child([] {
    GlogOpen("tester", 0, 0);
    LogWrite(6, "source", 1, "message");
  });
  EXPECT_TRUE(ends_with(daemon.wait_for("message"), " daemon.info tester: message"));
}

TEST_F(ChannelTest, a_mode_without_syslog_leaves_syslog_alone) {
  Syslog daemon;
  GlogOpen("tester", LOG_MODE_CONSOLE, 7);
  LogWrite(3 | LOG_MODE_SYSLOG, "source", 1, "message one");
  EXPECT_EQ(string::npos, daemon.wait_for("message one").find("tester"));

  GlogOpen("first", LOG_MODE_SYSLOG, 7);
  GlogOpen("second", LOG_MODE_CONSOLE, 7);
  LogWrite(3 | LOG_MODE_SYSLOG, "source", 1, "message two");
  EXPECT_TRUE(ends_with(daemon.wait_for("message two"), " first: message two"));
}

TEST_F(ChannelTest, open_refuses_null_and_changes_nothing) {
  GlogOpen("tester", LOG_MODE_CONSOLE, 7);
  errno = 0;
  EXPECT_EQ(0, GlogOpen(nullptr, LOG_MODE_SYSLOG, 1));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ("debug: text\n", capture([] { LogWrite(7, "source", 1, "text"); }).out);
}

TEST_F(ChannelTest, open_without_memory_keeps_the_settings) {
  Syslog daemon;
  GlogOpen("tester", LOG_MODE_SYSLOG, 7);
  Fault fault(Call::kMalloc, {.error = ENOMEM});
  errno = 0;
  EXPECT_EQ(0, GlogOpen("other", LOG_MODE_CONSOLE, 1));
  EXPECT_EQ(ENOMEM, errno);
  fault.disarm();
  LogWrite(7, "source", 1, "message");
  EXPECT_NE("", daemon.wait_for("message"));
  EXPECT_EQ(1, GlogOpen("other", LOG_MODE_SYSLOG, 7));
}

TEST_F(ChannelTest, messages_after_close_have_no_identity) {
  Syslog daemon;
  run_child([] {
    GlogOpen("tester", LOG_MODE_SYSLOG, 7);
    LogWrite(3, "source", 1, "message one");
    GlogClose();
    LogWrite(3, "source", 1, "message two");
  });
  EXPECT_NE(string::npos, daemon.wait_for("message one").find(" tester: "));
  EXPECT_EQ(string::npos, daemon.wait_for("message two").find(" tester: "));
}

// Syslog belongs to the channel only when it knows a mode; otherwise the program's own name stays.
TEST_F(ChannelTest, close_without_a_known_mode_leaves_syslog_open) {
  Syslog daemon;
  run_child([] {
    GlogOpen("tester", 0, 0);
    LogWrite(6, "source", 1, "message one");
    GlogClose();
    LogWrite(6, "source", 1, "message two");
  });
  EXPECT_NE(string::npos, daemon.wait_for("message one").find(" tester: "));
  EXPECT_NE(string::npos, daemon.wait_for("message two").find(" tester: "));
}

TEST_F(ChannelTest, close_and_open_can_be_repeated) {
  GlogClose();
  GlogClose();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(1, GlogOpen("tester", LOG_MODE_SYSLOG, 7));
    EXPECT_EQ(1, GlogOpen("tester", LOG_MODE_CONSOLE, 7));
    GlogClose();
  }
  GlogClose();
  EXPECT_EQ(1, GlogOpen("tester", LOG_MODE_CONSOLE, 7));
  EXPECT_TRUE(writes(7));
}

}  // namespace
