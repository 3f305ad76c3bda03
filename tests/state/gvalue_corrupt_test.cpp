// Stores that change under their readers: whatever stands in the file, no call leaves it.
#include <fcntl.h>

#include <random>

#include "gvalue_support.h"
#include "support/child.h"

namespace {

using namespace fairlead_test;
using std::string;

// Of a store for four values of 64 bytes together.
constexpr uint32_t kValueArea = 28 + 4 * 72;
constexpr uint32_t kStoreSize = kValueArea + 64;

class GvalueCorruptTest : public GvalueTest {
 protected:
  void SetUp() override {
    GvalueTest::SetUp();
    store_ = open("store", 4, 64);
    set(store_, "one", "first value");
    set(store_, "two", "second");
  }

  uint32_t& word(size_t offset) {
    return *reinterpret_cast<uint32_t*>(static_cast<char*>(store_->address) + offset);
  }

  // All calls; what they give must lie inside the mapping. Every byte is read.
  void use() {
    for (const char* name : {"one", "two", "three"}) {
      const char* begin = static_cast<const char*>(store_->address);
      const char* address = static_cast<const char*>(GvalueGet(store_, name));
      const int size = GvalueSize(store_, name);
      EXPECT_EQ(address == nullptr, size < 0);
      if (!address) continue;
      ASSERT_GE(address, begin + kValueArea);
      ASSERT_LE(address + size, begin + kStoreSize);
    }
    vessel_t* list = GvalueList(store_);
    if (list) TalkFree(list);
  }

  gvalue_t* store_ = nullptr;
};

TEST_F(GvalueCorruptTest, a_header_that_changed_reads_as_empty_and_refuses_to_set) {
  for (size_t field = kMagicField; field <= kDataUsed; ++field) {
    for (uint32_t odd : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 5000u}) {
      const uint32_t former = word(field * 4);
      word(field * 4) = odd;
      EXPECT_EQ("<none>", get(store_, "one")) << field << " " << odd;
      EXPECT_EQ(nullptr, GvalueList(store_));
      errno = 0;
      EXPECT_EQ(0, set(store_, "one", "other"));
      EXPECT_EQ(ENOENT, errno);
      word(field * 4) = former;
    }
  }
  EXPECT_EQ("first value", get(store_, "one"));
}

TEST_F(GvalueCorruptTest, a_record_that_points_outside_reads_as_absent) {
  const size_t offset = 28 + 64, size = 28 + 68;
  const uint32_t begin = kValueArea;
  for (auto [odd_offset, odd_size] : {std::pair<uint32_t, uint32_t>{begin - 1, 4},
                                      {0, 4},
                                      {begin, 65},
                                      {begin + 64, 1},
                                      {begin + 65, 0},
                                      {0xFFFFFFFF, 1},
                                      {begin, 0x80000000},
                                      {begin, 0xFFFFFFFF},
                                      {begin + 4, 0x7FFFFFFF},
                                      {0xFFFFFFF0, 0x7FFFFFFF}}) {
    word(offset) = odd_offset;
    word(size) = odd_size;
    errno = 0;
    EXPECT_EQ(nullptr, GvalueGet(store_, "one")) << odd_offset << " " << odd_size;
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, GvalueSize(store_, "one"));
    EXPECT_EQ("second", get(store_, "two"));
    vessel_t* list = GvalueList(store_);
    EXPECT_EQ(1, VesselCount(list));
    TalkFree(list);
  }
}

TEST_F(GvalueCorruptTest, a_set_replaces_a_record_that_points_outside) {
  word(28 + 64) = 0xFFFFFFFF;
  EXPECT_EQ(1, set(store_, "one", "again"));
  EXPECT_EQ("again", get(store_, "one"));
}

TEST_F(GvalueCorruptTest, a_negative_count_finds_nothing) {
  word(12) = 0xFFFFFFFF;
  EXPECT_EQ(nullptr, GvalueGet(store_, "one"));
  EXPECT_EQ(0, set(store_, "three", "3"));
}

TEST_F(GvalueCorruptTest, no_bytes_whatever_lead_outside) {
  std::mt19937 random(1);
  const string whole(static_cast<char*>(store_->address), kStoreSize);
  const uint32_t odd[] = {0, 1, 4, 28, 72, 64, 316, 380, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (int round = 0; round < 20000; ++round) {
    memcpy(store_->address, whole.data(), whole.size());
    for (int changes = 1 + static_cast<int>(random() % 4); changes > 0; --changes) {
      const size_t at = 4 * (random() % (28 / 4 + 2 * 72 / 4));
      word(at) = random() % 2 ? odd[random() % std::size(odd)] : static_cast<uint32_t>(random());
    }
    use();
    set(store_, "three", string(random() % 80, 'x'));
    set(store_, "two", string(random() % 20, 'y'));
    use();
  }
}

TEST_F(GvalueCorruptTest, a_writer_that_scrambles_the_store_meanwhile_does_no_harm) {
  Gate stop;
  Child scrambler([&] {
    std::mt19937 random(2);
    while (!stop.wait(0))
      for (int i = 0; i < 1000; ++i) {
        const uint32_t former = word(4 * (random() % 43));
        uint32_t& changed = word(4 * (1 + random() % 42));
        __atomic_store_n(&changed, random() % 2 ? former : static_cast<uint32_t>(random() % 400),
                         __ATOMIC_RELAXED);
      }
    return 0;
  });
  for (int round = 0; round < 20000; ++round) {
    set(store_, "one", "some value");
    const char* address = static_cast<const char*>(GvalueGet(store_, "one"));
    const char* begin = static_cast<const char*>(store_->address);
    ASSERT_TRUE(!address || (address >= begin && address <= begin + kStoreSize));
  }
  stop.open();
  EXPECT_EQ(0, scrambler.wait().status);
}

TEST_F(GvalueCorruptTest, set_does_not_write_behind_a_file_that_was_cut) {
  ASSERT_EQ(0, truncate(store_path("store").c_str(), 0));
  errno = 0;
  EXPECT_EQ(0, set(store_, "one", "value"));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(GvalueCorruptTest, processes_that_mapped_a_removed_store_keep_it) {
  unlink(store_path("store").c_str());
  EXPECT_EQ(1, set(store_, "one", "still here"));
  EXPECT_EQ(string("still here\0", 11), get(store_, "one"));
  EXPECT_EQ("<none>", get(open(), "one"));
}

}  // namespace
