// Many processes on one value store, one registry, one file of joints: what is ever lost is what
// two changes at the same time may take from each other, nobody reads half of anything, and nobody
// waits for ever.
#include <sys/stat.h>

#include "faults/faults_fixture.h"
#include "support/stress.h"

namespace {

using namespace fairlead_test;

constexpr int kWriters = 12;
constexpr int kReaders = 6;

class ConcurrencyTest : public FaultsTest {
 protected:
  static std::string name_of(int who) { return "number" + std::to_string(who); }

  static void put_project() { put_file("/prj/net/port.adp", ""); }

  // A change that was refused says why. A file that is held by others for a second is no failure.
  static void expect_done_or_busy(int result, const char* what) {
    EXPECT_TRUE(result == 1 || errno == EBUSY) << what << ": " << strerror(errno);
  }

  // The document, or null where its file is held by others for a second.
  static void expect_kept(talk_t* document, const char* name) {
    if (!document && errno == EBUSY) return;
    EXPECT_TRUE(document && VesselGet(document, name)) << name << " is lost";
    TalkFree(document);
  }
};

// ---- Value stores ----

TEST_F(ConcurrencyTest, writers_of_values_never_lose_one_of_them) {
  ASSERT_EQ(0, run_child([] { return GvalueCreate("busy") ? 0 : 1; }).status);
  Crowd crowd;
  crowd.add(kWriters, [](int who, int round) {
    static gvalue_t* const store = GvalueCreate("busy");
    const int own = round, common = who << 24 | who << 16 | who << 8 | who;
    ASSERT_EQ(1, GvalueSet(store, name_of(who).c_str(), &own, sizeof own));
    ASSERT_EQ(1, GvalueSet(store, "common", &common, sizeof common));
    const void* found = GvalueGet(store, name_of(who).c_str());
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(round, *static_cast<const volatile int*>(found));
  });
  crowd.wait();
  const auto reader = run_child([] {
    gvalue_t* store = GvalueCreate("busy");
    talk_t* list = GvalueList(store);
    EXPECT_EQ(kWriters + 1, VesselCount(list));
    TalkFree(list);
  });
  EXPECT_EQ(0, reader.status) << reader.err;
}

// Whoever comes first makes the store; nobody takes it for broken and removes it.
TEST_F(ConcurrencyTest, processes_that_make_a_store_at_once_share_it) {
  for (int round = 0; round < 20 * stress_seconds(); ++round) {
    const std::string store_name = "store" + std::to_string(round);
    Gate go;
    std::vector<std::unique_ptr<Child>> openers;
    for (int who = 0; who < kWriters; ++who)
      openers.push_back(std::make_unique<Child>([&, who] {
        if (!go.wait()) return 1;
        gvalue_t* store = GvalueCreate(store_name.c_str());
        EXPECT_NE(nullptr, store) << strerror(errno);
        return store && GvalueSet(store, name_of(who).c_str(), &who, sizeof who) == 1 ? 0 : 2;
      }));
    go.open();
    for (auto& opener : openers) EXPECT_EQ(0, opener->wait().status);
    const auto reader = run_child([&] {
      gvalue_t* store = GvalueCreate(store_name.c_str());
      for (int who = 0; who < kWriters; ++who) {
        const void* found = GvalueGet(store, name_of(who).c_str());
        EXPECT_TRUE(found && *static_cast<const int*>(found) == who) << who << " is lost";
      }
    });
    ASSERT_EQ(0, reader.status) << round << reader.err;
  }
}

// ---- The registry of adapters ----

TEST_F(ConcurrencyTest, bindings_are_lost_to_other_bindings_only) {
  put_project();
  ASSERT_EQ(1, DynAdpCreate("kept", "net/port"));
  Crowd crowd;
  crowd.add(kWriters, [](int who, int round) {
    errno = 0;
    if (round % 2 == 0)
      expect_done_or_busy(DynAdpCreate(name_of(who).c_str(), "net/port"), "bind");
    else
      DynAdpDelete(name_of(who).c_str());  // another's change may have taken the binding away
  });
  crowd.add(kReaders, [](int, int) {
    errno = 0;
    expect_kept(DynAdpList(nullptr), "kept");
    struct stat status;
    EXPECT_EQ(0, stat("/tmp/.var/dadp.cache", &status)) << "there is always a registry";
  });
  crowd.wait();
  for (int who = 0; who < kWriters; ++who) DynAdpCreate(name_of(who).c_str(), "net/port");
  talk_t* list = DynAdpList(nullptr);
  EXPECT_EQ(kWriters + 1, VesselCount(list));
  TalkFree(list);
}

// ---- Joints ----

TEST_F(ConcurrencyTest, joints_are_lost_to_other_joints_only) {
  ASSERT_EQ(1, JointCreate("kept", "up", "lan", "refresh"));
  Crowd crowd;
  crowd.add(kWriters, [](int who, int round) {
    const std::string target = name_of(who);
    errno = 0;
    // One that is there already is not made again, and one that another's change has taken away
    // can't be deleted.
    if (round % 2 == 0)
      JointCreate("wan", "up", target.c_str(), "refresh");
    else
      JointDelete("wan", "up", target.c_str(), "refresh");
    EXPECT_TRUE(errno == 0 || errno == EBUSY || errno == ENOENT) << strerror(errno);
  });
  crowd.add(kReaders, [](int, int) {
    errno = 0;
    expect_kept(JointList(nullptr), "kept");
  });
  crowd.wait();
  for (int who = 0; who < kWriters; ++who)
    JointCreate("wan", "up", name_of(who).c_str(), "refresh");
  talk_t* targets = JointList("wan");
  EXPECT_EQ(kWriters, VesselCount(VesselGetX(targets, "up")));
  TalkFree(targets);
  for (const char* left : {"/tmp/.var/.joint.cache.saving", "/tmp/.var/.dadp.cache.saving"})
    EXPECT_FALSE(exists(left));
}

}  // namespace
