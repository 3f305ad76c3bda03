// Starts, ends and descriptions of a service with each allocation failing in turn, alone and with
// all that follow.
#include "faults_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;

constexpr int kLogged = 255;  // the process has ended by the log, as told there

struct Asked {
  const char* name;
  int (*call)();  // 0 when it says that it is done
  bool changes;   // the daemon, which stays otherwise
  bool starts;    // one, or may have to
};

int described(vessel_t* document) {
  TalkFree(document);
  return document ? 0 : -1;
}

const Asked kAsked[] = {
    {"start", [] { return ServiceStart("net", "test", "wait", "%s,%d", "a", 1); }, true, true},
    {"stop", [] { return ServiceStop("net"); }, true, false},
    {"reset", [] { return ServiceReset("net"); }, true, true},
    {"off", [] { return ServiceOff("net"); }, false, false},
    {"check", [] { return DaemonCheck(); }, false, true},
    {"pid", [] { return ServicePid("net") > 0 ? 0 : -1; }, false, false},
    {"info", [] { return described(ServiceInfo("net")); }, false, false},
    {"list", [] { return described(ServiceList()); }, false, false},
};

class MemoryFaultsTest : public ServiceFaultsTest {
 protected:
  void SetUp() override { ServiceTest::SetUp(); }

  struct Outcome {
    bool met = false;
    Ended ended;
  };

  // One call in a process of its own, which is left as it was.
  static Outcome without_memory(const Asked& asked, int nth, int times) {
    Outcome outcome;
    Gate met;
    outcome.ended = run_child([&] {
      GlogOpen("test", LOG_MODE_CONSOLE, 1);
      const Census before = take_census();
      Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM, .times = times});
      const int result = asked.call();
      fault.disarm();
      if (fault.fired()) met.open();
      Census after = take_census();
      after.children = before.children;  // a start may let go of its daemon while that is launched
      EXPECT_EQ("", difference(before, after));
      return result == 0 ? kDone : kRefused;
    });
    outcome.met = met.wait(0) || outcome.ended.status == kLogged;
    return outcome;
  }

  static void expect_told(const Ended& ended, const std::string& what) {
    EXPECT_EQ(0, ended.signal) << what;
    if (ended.status == kDone || ended.status == kRefused) return;
    EXPECT_EQ(kLogged, ended.status) << what;
    EXPECT_NE(std::string::npos, ended.err.find("emerg: out of memory")) << what << ended.err;
  }

  // Each allocation of a call fails in turn: alone, and with all that follow where a daemon makes
  // some of them.
  template <class Arrange, class Check>
  static void fail_in_turn(const Asked& asked, Arrange arrange, Check check) {
    for (const int times : {1, kForever}) {
      bool met = times == 1 || asked.starts;
      for (int nth = 1; met; ++nth) {
        const std::string what = std::string(asked.name) + ", allocation " + std::to_string(nth) +
                                 (times > 1 ? " and all that follow" : "");
        arrange();
        const Outcome outcome = without_memory(asked, nth, times);
        expect_told(outcome.ended, what);
        check(what);
        expect_one_daemon_or_none(what);
        met = outcome.met;
        EXPECT_TRUE(met || nth > 1) << what << ": none was made";
      }
    }
  }
};

class EachCallTest : public MemoryFaultsTest, public testing::WithParamInterface<Asked> {};

TEST_P(EachCallTest, without_memory_leaves_one_daemon_or_none) {
  const Asked& asked = GetParam();
  const bool first = strcmp(asked.name, "start") == 0;
  pid_t daemon = -1;
  fail_in_turn(
      asked, [&] { daemon = first ? -1 : start("net"); },
      [&](const std::string& what) { EXPECT_TRUE(asked.changes || daemon == pid("net")) << what; });
}

INSTANTIATE_TEST_SUITE_P(Every, EachCallTest, testing::ValuesIn(kAsked),
                         [](const auto& asked) { return asked.param.name; });

// A service that has died is brought back at once or by the next look.
TEST_F(MemoryFaultsTest, keep_the_record_of_a_dead_service) {
  const std::string record = record_of("test", "wait", "a,1");
  for (const Asked& asked : kAsked) {
    if (asked.changes || strcmp(asked.name, "off") == 0) continue;
    fail_in_turn(
        asked, [&] { put_record("net", record); },
        [&](const std::string& what) {
          EXPECT_LE(settled().size(), 1u) << what;
          EXPECT_EQ(record, file_content(record_path("net"))) << what;
          EXPECT_EQ(0, DaemonCheck()) << what;
          EXPECT_GT(pid("net"), 0) << what;
        });
  }
}

}  // namespace
