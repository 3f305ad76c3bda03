// The device nodes of a flash partition, found in a "/proc/mtd" and a "/dev" of the test's own.
#include <functional>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/namespaces.h"

namespace {

using fairlead_test::put_file;

constexpr int kNoNamespace = 77;

constexpr const char* kTable =
    "dev:    size   erasesize  name\n"
    "mtd0: 00040000 00010000 \"boot\"\n"
    "mtd1: 00010000 00010000 \"boot-env\"\n"
    "mtd12: 00fb0000 00010000 \"firmware\"\n";

bool hide_proc_and_dev() {
  return fairlead_test::enter_namespaces(CLONE_NEWNS) && fairlead_test::hide("/proc") &&
         fairlead_test::hide("/dev");
}

struct Found {
  int result = -1;
  char character[64] = "untouched";
  char block[64] = "untouched";
};

Found find(const char* name) {
  Found found;
  found.result = proc_mtddevice(name, found.character, found.block);
  return found;
}

class FlashTest : public fairlead_test::DeviceTest {
 protected:
  // Runs checks in a process with a table of partitions and the nodes of some.
  void with_flash(const std::string& table, std::initializer_list<const char*> nodes,
                  std::function<void()> checks) {
    const auto ended = fairlead_test::run_child([&] {
      if (!hide_proc_and_dev()) return kNoNamespace;
      put_file("/proc/mtd", table);
      for (const char* node : nodes) put_file(node, "");
      checks();
      return 0;
    });
    if (ended.status == kNoNamespace) GTEST_SKIP() << "no mount namespace here";
    EXPECT_EQ(0, ended.status) << "signal " << ended.signal;
  }
};

TEST_F(FlashTest, finds_the_nodes_of_a_partition) {
  with_flash(kTable, {"/dev/mtd12", "/dev/mtdblock12"}, [] {
    const Found found = find("firmware");
    EXPECT_EQ(1, found.result);
    EXPECT_STREQ("/dev/mtd12", found.character);
    EXPECT_STREQ("/dev/mtdblock12", found.block);
  });
}

TEST_F(FlashTest, finds_nodes_in_folders) {
  with_flash(kTable, {"/dev/mtd/12", "/dev/mtdblock/12"}, [] {
    const Found found = find("\"firmware\"");
    EXPECT_EQ(1, found.result);
    EXPECT_STREQ("/dev/mtd/12", found.character);
    EXPECT_STREQ("/dev/mtdblock/12", found.block);
  });
}

TEST_F(FlashTest, prefers_the_plain_nodes) {
  with_flash(kTable, {"/dev/mtd0", "/dev/mtdblock0", "/dev/mtdblock/0"}, [] {
    const Found found = find("\"boot\"");
    EXPECT_EQ(1, found.result);
    EXPECT_STREQ("/dev/mtd0", found.character);
    EXPECT_STREQ("/dev/mtdblock0", found.block);
  });
}

TEST_F(FlashTest, looks_only_for_the_wanted_nodes) {
  with_flash(kTable, {"/dev/mtd12"}, [] {
    char path[32];
    EXPECT_EQ(1, proc_mtddevice("firmware", path, nullptr));
    EXPECT_STREQ("/dev/mtd12", path);
    EXPECT_EQ(0, proc_mtddevice("firmware", nullptr, path));
    EXPECT_STREQ("/dev/mtdblock/12", path);
    EXPECT_EQ(1, proc_mtddevice("firmware", nullptr, nullptr));
  });
}

TEST_F(FlashTest, a_missing_node_makes_the_result_0) {
  with_flash(kTable, {"/dev/mtdblock12", "/dev/mtd0"}, [] {
    const Found no_character = find("firmware");
    EXPECT_EQ(0, no_character.result);
    EXPECT_STREQ("/dev/mtd/12", no_character.character);
    EXPECT_STREQ("/dev/mtdblock12", no_character.block);
    const Found no_block = find("\"boot\"");
    EXPECT_EQ(0, no_block.result);
    EXPECT_STREQ("/dev/mtd0", no_block.character);
    EXPECT_STREQ("/dev/mtdblock/0", no_block.block);
  });
}

TEST_F(FlashTest, the_last_of_several_lines_decides) {
  with_flash(kTable, {"/dev/mtd0", "/dev/mtdblock0", "/dev/mtd1"}, [] {
    const Found found = find("boot");
    EXPECT_EQ(0, found.result);
    EXPECT_STREQ("/dev/mtd1", found.character);
    EXPECT_STREQ("/dev/mtdblock/1", found.block);
  });
}

TEST_F(FlashTest, the_name_may_stand_anywhere_in_the_line) {
  with_flash(kTable, {"/dev/mtd12", "/dev/mtdblock12"}, [] {
    for (const char* name : {"00fb0000", "irmwar", "mtd12:"})
      EXPECT_EQ(1, find(name).result) << name;
    EXPECT_EQ(1, find("").result) << "is part of every line";
  });
}

TEST_F(FlashTest, leaves_the_outputs_untouched_when_no_line_has_the_name) {
  with_flash(kTable, {"/dev/mtd0", "/dev/mtdblock0"}, [] {
    for (const char* name : {"kernel", "erasesize", "Boot"}) {
      const Found found = find(name);
      EXPECT_EQ(0, found.result) << name;
      EXPECT_STREQ("untouched", found.character);
      EXPECT_STREQ("untouched", found.block);
    }
  });
}

TEST_F(FlashTest, only_lines_that_begin_with_a_partition_number_count) {
  for (const char* line : {"mtd: x", "mtd-1: x", "mtd x", "mtd3 x", "mtd99999999999: x", " mtd3: x",
                           "MTD3: x", "abc3: mtd x", "mtd3", "x", ""})
    with_flash(line, {}, [line] {
      EXPECT_STREQ("untouched", find("x").character) << line;
      EXPECT_STREQ("untouched", find("mtd").character) << line;
    });
}

TEST_F(FlashTest, the_largest_number_fits_an_output_of_32_bytes) {
  with_flash("mtd2147483647: x", {}, [] {
    char character[32], block[32];
    EXPECT_EQ(0, proc_mtddevice("x", character, block));
    EXPECT_STREQ("/dev/mtd/2147483647", character);
    EXPECT_STREQ("/dev/mtdblock/2147483647", block);
  });
}

TEST_F(FlashTest, a_long_line_is_read_in_pieces_of_1023_characters) {
  const std::string first = "mtd5: " + std::string(1017, 'x');
  ASSERT_EQ(1023u, first.size());
  with_flash(first + "far\nmtd6: \"next\"\n", {"/dev/mtd5", "/dev/mtd6"}, [] {
    EXPECT_STREQ("untouched", find("far").character);
    EXPECT_STREQ("/dev/mtd6", find("next").character);
    EXPECT_STREQ("/dev/mtd5", find("xxx").character);
  });
}

TEST_F(FlashTest, a_table_cut_anywhere_gives_what_is_whole) {
  const std::string table = kTable, name = "firmware";
  const size_t complete = table.find(name) + name.size();
  for (size_t length = 0; length <= table.size(); length += 5)
    with_flash(table.substr(0, length), {}, [&] {
      EXPECT_STREQ(length < complete ? "untouched" : "/dev/mtd/12", find("firmware").character);
    });
}

TEST_F(FlashTest, refuses_no_name) {
  Found found;
  errno = 0;
  EXPECT_EQ(0, proc_mtddevice(nullptr, found.character, found.block));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_STREQ("untouched", found.character);
}

TEST_F(FlashTest, fails_without_a_table) {
  const auto ended = fairlead_test::run_child([] {
    if (!hide_proc_and_dev()) return kNoNamespace;
    const Found found = find("firmware");
    EXPECT_EQ(0, found.result);
    EXPECT_EQ(ENOENT, errno);
    EXPECT_STREQ("untouched", found.character);
    return 0;
  });
  if (ended.status == kNoNamespace) GTEST_SKIP() << "no mount namespace here";
}

}  // namespace
