// Making, taking away and listing joints.
#include <fcntl.h>
#include <sys/stat.h>

#include <tuple>

#include "joint_support.h"
#include "support/capture.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;

class JointEditTest : public JointTest {
 protected:
  static constexpr char kTwoTargets[] = R"({"wan":{"up":{"lan.refresh":"","dns.restart":""}}})";
  static constexpr char kThreeTargets[] =
      R"({"wan":{"up":{"lan.refresh":"","dns.restart":""}},"lan":{"up":{"dns.restart":""}}})";

  void create_two() {
    ASSERT_EQ(1, create("lan", "refresh"));
    ASSERT_EQ(1, create("dns", "restart"));
  }

  // Some edits by one process among others; a lock that is held too long is none of its business.
  static int edit_often(const char* target) {
    for (int round = 0; round < 50; ++round) {
      create(target, "refresh");
      JointDelete("wan", "up", target, "refresh");
    }
    return file().find(R"("lan.refresh":"")") != std::string::npos ? 0 : 1;
  }

  // Which file it is, and when it was last written.
  static std::string stamp() {
    struct stat status = {};
    stat(kJointFile, &status);
    return std::to_string(status.st_ino) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
           std::to_string(status.st_mtim.tv_nsec);
  }
};

TEST_F(JointEditTest, create_makes_a_file_of_three_levels) {
  create_two();
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, create_keeps_the_order_of_insertion) {
  for (const char* name : {"c", "a", "b"}) EXPECT_EQ(1, JointCreate(name, name, name, name));
  EXPECT_EQ(1, JointCreate("c", "a", "z", "z"));
  EXPECT_EQ(1, JointCreate("c", "c", "a", "a"));
  EXPECT_EQ(
      R"({"c":{"c":{"c.c":"","a.a":""},"a":{"z.z":""}},"a":{"a":{"a.a":""}},"b":{"b":{"b.b":""}}})",
      file());
}

TEST_F(JointEditTest, create_of_a_joint_that_is_there_returns_0_and_writes_nothing) {
  create_two();
  const std::string before = stamp();
  errno = 0;
  EXPECT_EQ(0, create("lan", "refresh"));
  EXPECT_EQ(0, errno);
  EXPECT_EQ(before, stamp());
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, create_without_an_event_uses_tmp) {
  EXPECT_EQ(1, JointCreate("wan", nullptr, "lan", "refresh"));
  EXPECT_EQ(R"({"wan":{"tmp":{"lan.refresh":""}}})", file());
  EXPECT_EQ(0, JointCreate("wan", "tmp", "lan", "refresh"));
}

TEST_F(JointEditTest, create_without_an_argument_does_nothing) {
  errno = 0;
  EXPECT_EQ(0, JointCreate(nullptr, "up", "lan", "refresh"));
  EXPECT_EQ(0, JointCreate("wan", "up", nullptr, "refresh"));
  EXPECT_EQ(0, JointCreate("wan", "up", "lan", nullptr));
  EXPECT_EQ(0, errno);
  EXPECT_FALSE(exists(kJointFile));
}

TEST_F(JointEditTest, create_refuses_an_empty_object_or_event) {
  errno = 0;
  EXPECT_EQ(0, JointCreate("", "up", "lan", "refresh"));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(0, JointCreate("wan", "", "lan", "refresh"));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_FALSE(exists(kJointFile));
}

TEST_F(JointEditTest, create_refuses_a_name_that_would_break_the_file) {
  create_two();
  for (const char* name : {"a\"b", "a\\", "a\\x", "a\":\"\",\"b", "a\\\nb"}) {
    for (auto [object, event, target, interface] :
         {std::tuple{name, "up", "lan", "refresh"}, std::tuple{"wan", name, "lan", "refresh"},
          std::tuple{"wan", "up", name, "refresh"}, std::tuple{"wan", "up", "lan", name}}) {
      errno = 0;
      EXPECT_EQ(0, JointCreate(object, event, target, interface)) << name;
      EXPECT_EQ(EINVAL, errno) << name;
    }
  }
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, create_refuses_a_name_without_a_word_on_standard_error) {
  const Captured said = capture([] { JointCreate("a\"b", "up", "lan", "refresh"); });
  EXPECT_EQ("", said.err);
  EXPECT_EQ("", said.out);
}

TEST_F(JointEditTest, create_takes_any_other_name) {
  EXPECT_EQ(1, JointCreate("net/\\\"wan\\\"", "100%s \xc3\xa4", "a{[]}", "c[1,2]"));
  EXPECT_EQ("{\"net/\\\"wan\\\"\":{\"100%s \xc3\xa4\":{\"a{[]}.c[1,2]\":\"\"}}}", file());
  EXPECT_EQ("{\"100%s \xc3\xa4\":{\"a{[]}.c[1,2]\":\"\"}}", listed("net/\\\"wan\\\""));
  EXPECT_EQ(0, JointCreate("net/\\\"wan\\\"", "100%s \xc3\xa4", "a{[]}", "c[1,2]"));
  EXPECT_EQ(1, JointDelete("net/\\\"wan\\\"", "100%s \xc3\xa4", "a{[]}", "c[1,2]"));
}

TEST_F(JointEditTest, create_keeps_1023_bytes_of_a_target_and_63_of_an_interface) {
  const std::string target(1100, 't'), interface(70, 'i');
  EXPECT_EQ(1, create(target.c_str(), "refresh"));
  EXPECT_EQ("{\"up\":{\"" + std::string(1023, 't') + "\":\"\"}}", listed("wan"));
  EXPECT_EQ(0, create(target.c_str(), "restart"));  // the same 1023 bytes
  EXPECT_EQ(1, JointDelete("wan", "up", target.c_str(), "refresh"));
  EXPECT_EQ(1, create("lan", interface.c_str()));
  EXPECT_EQ("{\"up\":{\"lan." + std::string(63, 'i') + "\":\"\"}}", listed("wan"));
}

TEST_F(JointEditTest, create_fails_without_the_run_time_root) {
  remove_tree("/tmp/.var");
  errno = 0;
  EXPECT_EQ(0, create("lan", "refresh"));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(JointEditTest, delete_takes_one_joint_away) {
  create_two();
  EXPECT_EQ(1, JointDelete("wan", "up", "lan", "refresh"));
  EXPECT_EQ(R"({"wan":{"up":{"dns.restart":""}}})", file());
}

TEST_F(JointEditTest, delete_of_the_last_target_leaves_the_event) {
  ASSERT_EQ(1, create("lan", "refresh"));
  EXPECT_EQ(1, JointDelete("wan", "up", "lan", "refresh"));
  EXPECT_EQ(R"({"wan":{"up":{}}})", file());
  EXPECT_EQ(1, create("lan", "refresh"));  // and it can be filled again
}

TEST_F(JointEditTest, delete_without_an_event_uses_tmp) {
  ASSERT_EQ(1, JointCreate("wan", "tmp", "lan", "refresh"));
  EXPECT_EQ(1, JointDelete("wan", nullptr, "lan", "refresh"));
  EXPECT_EQ(R"({"wan":{"tmp":{}}})", file());
}

TEST_F(JointEditTest, delete_without_an_interface_looks_for_the_bare_target) {
  put_file(kJointFile, R"({"wan":{"up":{"lan.refresh":"","lan":""}}})");
  EXPECT_EQ(1, JointDelete("wan", "up", "lan", nullptr));
  EXPECT_EQ(R"({"wan":{"up":{"lan.refresh":""}}})", file());
  EXPECT_EQ(0, JointDelete("wan", "up", "lan", nullptr));
}

TEST_F(JointEditTest, delete_of_what_is_not_there_writes_nothing) {
  create_two();
  const std::string before = stamp();
  for (auto [object, event, target, interface] :
       {std::tuple{"lan", "up", "lan", "refresh"}, std::tuple{"wan", "down", "lan", "refresh"},
        std::tuple{"wan", "up", "lan", "restart"}, std::tuple{"wan", "up", "", "refresh"},
        std::tuple{"", "", "lan", "refresh"}, std::tuple{"wan", "Up", "lan", "refresh"}}) {
    EXPECT_EQ(0, JointDelete(object, event, target, interface)) << object << event << target;
  }
  EXPECT_EQ(before, stamp());
}

TEST_F(JointEditTest, delete_without_object_or_target_does_nothing) {
  create_two();
  errno = 0;
  EXPECT_EQ(0, JointDelete(nullptr, "up", "lan", "refresh"));
  EXPECT_EQ(0, JointDelete("wan", "up", nullptr, "refresh"));
  EXPECT_EQ(0, errno);
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, delete_without_a_file_returns_0_and_makes_none) {
  errno = 0;
  EXPECT_EQ(0, JointDelete("wan", "up", "lan", "refresh"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(exists(kJointFile));
}

TEST_F(JointEditTest, list_gives_the_events_of_one_object) {
  create_two();
  ASSERT_EQ(1, JointCreate("lan", nullptr, "dns", "restart"));
  EXPECT_EQ(R"({"up":{"lan.refresh":"","dns.restart":""}})", listed("wan"));
  EXPECT_EQ(R"({"tmp":{"dns.restart":""}})", listed("lan"));
}

TEST_F(JointEditTest, list_without_an_object_gives_everything) {
  create_two();
  EXPECT_EQ(kTwoTargets, listed(nullptr));
}

TEST_F(JointEditTest, list_gives_null_for_an_object_without_joints) {
  create_two();
  errno = 0;
  EXPECT_EQ(nullptr, JointList("dns"));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(JointEditTest, list_gives_null_without_a_file) {
  errno = 0;
  EXPECT_EQ(nullptr, JointList(nullptr));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(nullptr, JointList("wan"));
}

TEST_F(JointEditTest, list_gives_a_document_of_the_callers) {
  create_two();
  talk_t* list = JointList("wan");
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(1, VesselSetS(list, "up", "gone"));
  TalkFree(list);
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, no_lost_memory_changes_the_file_by_half) {
  create_two();
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    errno = 0;
    const int made = each.run([&] { return JointCreate("lan", "up", "dns", "restart"); });
    if (made == 0) {
      EXPECT_EQ(ENOMEM, errno) << each.nth();
      EXPECT_EQ(kTwoTargets, file()) << each.nth();
      continue;
    }
    EXPECT_EQ(kThreeTargets, file());
    put_file(kJointFile, kTwoTargets);
  }
}

TEST_F(JointEditTest, delete_and_list_bear_lost_memory) {
  create_two();
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    errno = 0;
    const int deleted = each.run([&] { return JointDelete("wan", "up", "lan", "refresh"); });
    if (deleted == 0) {
      EXPECT_EQ(ENOMEM, errno) << each.nth();
      EXPECT_EQ(kTwoTargets, file()) << each.nth();
    }
    put_file(kJointFile, kTwoTargets);
  }
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    errno = 0;
    talk_t* list = each.run([&] { return JointList("wan"); });
    if (each.fired()) {
      EXPECT_EQ(nullptr, list);
      EXPECT_EQ(ENOMEM, errno);
    }
    TalkFree(list);
  }
}

TEST_F(JointEditTest, a_failed_save_leaves_a_whole_file) {
  create_two();
  for (const auto& [call, error] : {std::pair{Call::kOpen, EMFILE}, std::pair{Call::kWrite, ENOSPC},
                                    std::pair{Call::kFsync, EIO}, std::pair{Call::kRename, EIO}}) {
    for (EachCall each(call, {.error = error}); each.next();) {
      const int made = each.run([] { return JointCreate("lan", "up", "dns", "restart"); });
      const std::string now = file();  // a save that fails at its very end has replaced the file
      EXPECT_TRUE(now == kThreeTargets || (!made && now == kTwoTargets)) << each.nth() << now;
      put_file(kJointFile, kTwoTargets);
    }
  }
}

TEST_F(JointEditTest, a_file_that_is_locked_is_neither_read_nor_replaced) {
  create_two();
  Gate locked, done;
  Child holder([&] {
    const int fd = open(kJointFile, O_RDWR);
    if (!lockfd_set(fd, F_WRLCK, 0, SEEK_SET, 0, 0)) return 1;
    locked.open();
    return done.wait() ? 0 : 1;
  });
  ASSERT_TRUE(locked.wait());
  errno = 0;
  EXPECT_EQ(0, create("new", "joint"));
  EXPECT_EQ(EBUSY, errno);
  errno = 0;
  EXPECT_EQ(nullptr, JointList(nullptr));
  EXPECT_EQ(EBUSY, errno);
  done.open();
  EXPECT_EQ(0, holder.wait().status);
  EXPECT_EQ(kTwoTargets, file());
}

TEST_F(JointEditTest, many_processes_edit_and_no_reader_sees_half_a_file) {
  create_two();
  Gate stop;
  Child reader([&] {
    int broken = 0;
    while (!stop.wait(0)) {
      talk_t* list = JointList("wan");
      if (!list && errno != EBUSY) ++broken;
      TalkFree(list);
    }
    return broken;
  });
  {
    Child writers[] = {Child([] { return edit_often("a"); }), Child([] { return edit_often("b"); }),
                       Child([] { return edit_often("c"); })};
    for (Child& writer : writers) EXPECT_EQ(0, writer.wait().status);
  }
  stop.open();
  EXPECT_EQ(0, reader.wait().status);
  EXPECT_NE(std::string::npos, file().find(R"("lan.refresh":"","dns.restart":"")")) << file();
}

}  // namespace
