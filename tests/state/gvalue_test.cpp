// Named values: what one process sets, all processes see.
#include "fairlead/state/gvalue.h"

#include <fcntl.h>
#include <sys/wait.h>

#include "gvalue_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;
using fairlead::FileLock;
using std::string;

TEST_F(GvalueTest, set_hands_out_records_and_space_in_order) {
  gvalue_t* store = open();
  EXPECT_EQ(1, set(store, "first", "abc"));
  EXPECT_EQ(1, set(store, "second", "defgh"));

  const string content = file_content(store_path("store"));
  EXPECT_EQ(2u, word_at(content, 12));  // count
  EXPECT_EQ(8u, word_at(content, 24));  // bytes handed out
  EXPECT_EQ(string("first").append(59, '\0'), content.substr(28, 64));
  EXPECT_EQ(7228u, word_at(content, 28 + 64));  // value offset
  EXPECT_EQ(3u, word_at(content, 28 + 68));     // value size
  EXPECT_EQ(string("second").append(58, '\0'), content.substr(100, 64));
  EXPECT_EQ(7231u, word_at(content, 100 + 64));
  EXPECT_EQ(5u, word_at(content, 100 + 68));
  EXPECT_EQ("abcdefgh", content.substr(7228, 8));
}

TEST_F(GvalueTest, get_gives_the_address_in_the_mapping) {
  gvalue_t* store = open();
  set(store, "name", "abc");
  EXPECT_EQ(static_cast<char*>(store->address) + 7228, GvalueGet(store, "name"));
}

TEST_F(GvalueTest, another_process_reads_the_same_bytes) {
  const uint32_t value = 0x12345678;
  EXPECT_EQ(1, GvalueSet(open(), "number", &value, sizeof value));
  EXPECT_EQ(0, run_child([&] {
                 gvalue_t* store = GvalueCreate("store");
                 return memcmp(GvalueGet(store, "number"), &value, sizeof value);
               }).status);
}

TEST_F(GvalueTest, a_change_of_another_process_shows_behind_the_address) {
  gvalue_t* store = open();
  set(store, "mode", "old!");
  const char* address = static_cast<const char*>(GvalueGet(store, "mode"));
  EXPECT_EQ(
      0, run_child([] { return set(GvalueCreate("store"), "mode", "new?") == 1 ? 0 : 1; }).status);
  EXPECT_EQ("new?", string(address, 4));
}

TEST_F(GvalueTest, a_smaller_value_keeps_the_size_and_the_address) {
  gvalue_t* store = open();
  set(store, "name", "abcd");
  const void* address = GvalueGet(store, "name");
  EXPECT_EQ(1, set(store, "name", "xy"));
  EXPECT_EQ(4, GvalueSize(store, "name"));
  EXPECT_EQ(address, GvalueGet(store, "name"));
  EXPECT_EQ(string("xy\0\0", 4), get(store, "name"));
}

TEST_F(GvalueTest, a_value_of_no_bytes_clears_the_one_before_or_is_an_empty_one) {
  gvalue_t* store = open();
  set(store, "name", "abcd");
  const void* address = GvalueGet(store, "name");
  EXPECT_EQ(1, set(store, "name", ""));
  EXPECT_EQ(string(4, '\0'), get(store, "name"));
  EXPECT_EQ(address, GvalueGet(store, "name"));
  EXPECT_EQ(1, set(store, "empty", ""));
  EXPECT_EQ(0, GvalueSize(store, "empty"));
  EXPECT_NE(nullptr, GvalueGet(store, "empty"));
  EXPECT_EQ(1, set(store, "empty", "now"));
  EXPECT_EQ("now", get(store, "empty"));
}

TEST_F(GvalueTest, a_larger_value_moves_and_the_old_bytes_stay_stale) {
  gvalue_t* store = open();
  set(store, "name", "abcd");
  const char* old_address = static_cast<const char*>(GvalueGet(store, "name"));
  EXPECT_EQ(1, set(store, "name", "vwxyz"));
  EXPECT_EQ("vwxyz", get(store, "name"));
  EXPECT_EQ(old_address + 4, GvalueGet(store, "name"));
  EXPECT_EQ("abcd", string(old_address, 4));
  EXPECT_EQ(9u, word_at(file_content(store_path("store")), 24));
  EXPECT_EQ(1u, word_at(file_content(store_path("store")), 12));
}

TEST_F(GvalueTest, a_value_can_be_set_from_the_store_itself) {
  gvalue_t* store = open();
  set(store, "name", "abcdef");
  EXPECT_EQ(1, GvalueSet(store, "name", static_cast<char*>(GvalueGet(store, "name")) + 2, 3));
  EXPECT_EQ(string("cde\0\0\0", 6), get(store, "name"));
}

TEST_F(GvalueTest, the_101st_name_does_not_fit) {
  gvalue_t* store = open();
  for (int i = 0; i < 100; ++i) ASSERT_EQ(1, set(store, "name" + std::to_string(i), "v")) << i;
  errno = 0;
  EXPECT_EQ(0, set(store, "one more", "v"));
  EXPECT_EQ(ENOMEM, errno);
  EXPECT_EQ(1, set(store, "name99", "w"));  // a known name still can be set, and can grow
  EXPECT_EQ(1, set(store, "name0", "larger"));
  EXPECT_EQ("larger", get(store, "name0"));
}

TEST_F(GvalueTest, the_free_space_must_exceed_a_new_value) {
  gvalue_t* store = open();
  errno = 0;
  EXPECT_EQ(0, set(store, "all", string(25600, 'x')));
  EXPECT_EQ(ENOMEM, errno);
  EXPECT_EQ(nullptr, GvalueGet(store, "all"));
  EXPECT_EQ(1, set(store, "all", string(25599, 'x')));
  EXPECT_EQ(0, set(store, "one", "x"));
}

TEST_F(GvalueTest, the_free_space_must_exceed_a_grown_value) {
  gvalue_t* store = open("store", 2, 20);
  EXPECT_EQ(1, set(store, "a", "0123456789"));
  errno = 0;
  EXPECT_EQ(0, set(store, "a", "0123456789+"));
  EXPECT_EQ(ENOMEM, errno);
  EXPECT_EQ("0123456789", get(store, "a"));
  EXPECT_EQ(1, set(store, "a", "9876543210"));  // its own space is still its own
}

TEST_F(GvalueTest, names_count_up_to_64_characters) {
  gvalue_t* store = open();
  const string name(64, 'n');
  EXPECT_EQ(1, set(store, name + "one", "1"));
  EXPECT_EQ(1, set(store, name + "two", "2"));
  EXPECT_EQ("2", get(store, name));
  EXPECT_EQ(1u, word_at(file_content(store_path("store")), 12));
  EXPECT_EQ(name, file_content(store_path("store")).substr(28, 64));
  EXPECT_EQ("<none>", get(store, string(63, 'n')));
}

TEST_F(GvalueTest, the_last_of_two_records_of_a_name_counts) {
  string content = empty_store(2);
  memcpy(&content[0], words({kMagic, 2, 28, 2, 512, 172, 10}).data(), 28);
  for (uint32_t i = 0; i < 2; ++i) {
    content[28 + 72 * i] = 'n';
    memcpy(&content[28 + 72 * i + 64], words({172 + 5 * i, 5}).data(), 8);
  }
  memcpy(&content[172], "old..new..", 10);
  put_file(store_path("store"), content);
  EXPECT_EQ("new..", get(open(), "n"));
}

TEST_F(GvalueTest, a_missing_name_is_enoent) {
  gvalue_t* store = open();
  for (const char* other : {"", "other"}) {
    errno = 0;
    EXPECT_EQ(nullptr, GvalueGet(store, "name"));
    EXPECT_EQ(ENOENT, errno);
    errno = 0;
    EXPECT_EQ(-1, GvalueSize(store, "name"));
    EXPECT_EQ(ENOENT, errno);
    set(store, other, "value");
  }
}

TEST_F(GvalueTest, missing_arguments_are_refused) {
  gvalue_t* store = open();
  const auto refused = [](auto call) {
    errno = 0;
    const auto result = call();
    return errno == EINVAL ? result : decltype(result){1};
  };
  EXPECT_EQ(0, refused([&] { return GvalueSet(store, nullptr, "v", 1); }));
  EXPECT_EQ(0, refused([&] { return GvalueSet(store, "n", nullptr, 1); }));
  EXPECT_EQ(0, refused([&] { return GvalueSet(store, "n", "v", -1); }));
  EXPECT_EQ(0, refused([&] { return GvalueSet(store, "n", "v", INT32_MIN); }));
  EXPECT_EQ(-1, refused([&] { return GvalueSize(store, nullptr); }));
  errno = 0;
  EXPECT_EQ(nullptr, GvalueGet(store, nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(GvalueTest, set_fails_with_the_errno_of_its_lock) {
  gvalue_t* store = open();
  for (Call lock : {Call::kFlock, Call::kFcntl}) {
    Fault fault(lock, {.error = ENOLCK});
    errno = 0;
    EXPECT_EQ(0, set(store, "name", "value"));
    EXPECT_EQ(ENOLCK, errno);
  }
  EXPECT_EQ("<none>", get(store, "name"));
}

TEST_F(GvalueTest, set_waits_for_the_lock_of_another_process) {
  gvalue_t* store = open();
  Gate locked, release, done;
  Child holder([&] {
    const FileLock lock(store->fd, FileLock::Interrupted::kFails);
    locked.open();
    return release.wait() ? 0 : 1;
  });
  ASSERT_TRUE(locked.wait());
  Child setter([&] {
    const int result = set(GvalueCreate("store"), "name", "value");
    done.open();
    return result == 1 ? 0 : 1;
  });
  EXPECT_FALSE(done.wait(100));
  release.open();
  EXPECT_TRUE(done.wait());
  EXPECT_EQ(0, setter.wait().status);
  holder.wait();
  EXPECT_EQ("value", get(store, "name"));
}

TEST_F(GvalueTest, set_leaves_no_lock_behind) {
  gvalue_t* store = open();
  set(store, "name", "value");
  set(store, "too large", string(30000, 'x'));
  EXPECT_EQ(0, run_child([] {
                 const int fd = ::open(store_path("store").c_str(), O_RDWR);
                 struct flock whole = {};
                 whole.l_type = F_WRLCK;
                 return flock(fd, LOCK_EX | LOCK_NB) == 0 && fcntl(fd, F_SETLK, &whole) == 0 ? 0
                                                                                             : 1;
               }).status);
}

// The children inherit the opened file and with it the lock that belongs to it.
TEST_F(GvalueTest, forked_writers_wait_for_each_other) {
  gvalue_t* store = open();
  Child first([&] {
    Fault fault(Call::kStat, {.signal = SIGSTOP});  // the locks are held by now
    return set(store, "first", "1") == 1 ? 0 : 1;
  });
  ASSERT_EQ(first.pid(), waitpid(first.pid(), nullptr, WUNTRACED));
  Gate done;
  Child second([&] {
    const int result = set(store, "second", "2");
    done.open();
    return result == 1 ? 0 : 1;
  });
  EXPECT_FALSE(done.wait(100));
  first.send(SIGCONT);
  EXPECT_EQ(0, first.wait().status);
  EXPECT_EQ(0, second.wait().status);
  EXPECT_EQ("1", get(store, "first"));
  EXPECT_EQ("2", get(store, "second"));
}

TEST_F(GvalueTest, a_store_that_can_only_be_read_refuses_to_set) {
  set(open(), "name", "value");
  gvalue_t* store;
  {
    Fault fault(Call::kOpen, {.nth = 2, .error = EACCES});  // the one for reading and writing
    store = open();
  }
  ASSERT_NE(nullptr, store);
  EXPECT_EQ("value", get(store, "name"));
  errno = 0;
  EXPECT_EQ(0, set(store, "name", "other"));
  EXPECT_EQ(EACCES, errno);
}

// ---- List ----

TEST_F(GvalueTest, list_names_the_newest_first_with_their_sizes) {
  gvalue_t* store = open();
  set(store, "one", "1");
  set(store, "two", "22");
  set(store, string(70, 'n'), "333");
  vessel_t* list = GvalueList(store);
  string text;
  for (axp_t* member = VesselEach(list, nullptr); member; member = VesselEach(list, member))
    text += string(AxpGet(member)) + "=" + AxpGetS(member) + " ";
  EXPECT_EQ(string(64, 'n') + "=3 two=2 one=1 ", text);
  TalkFree(list);
}

TEST_F(GvalueTest, list_of_an_empty_store_is_null) {
  gvalue_t* store = open();
  errno = 0;
  EXPECT_EQ(nullptr, GvalueList(store));
  EXPECT_EQ(0, errno);
}

TEST_F(GvalueTest, list_without_memory_is_null) {
  gvalue_t* store = open();
  set(store, "one", "1");
  set(store, "two", "2");
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    errno = 0;
    vessel_t* list = each.run([&] { return GvalueList(store); });
    if (each.fired()) {
      EXPECT_EQ(nullptr, list) << each.nth();
      EXPECT_EQ(ENOMEM, errno);
    }
    if (!list) continue;
    EXPECT_EQ(2, VesselCount(list));
    TalkFree(list);
  }
}

TEST_F(GvalueTest, an_open_store_is_read_and_written_without_memory) {
  gvalue_t* store = open();
  set(store, "one", "1");
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = kForever});
  const int changed = set(store, "one", "a longer one"), added = set(store, "two", "2");
  const void* const found = GvalueGet(store, "one");
  const int size = GvalueSize(store, "two");
  fault.disarm();
  EXPECT_EQ(0, fault.calls());
  EXPECT_EQ(1, changed);
  EXPECT_EQ(1, added);
  EXPECT_NE(nullptr, found);
  EXPECT_EQ(1, size);
  EXPECT_EQ("a longer one", get(store, "one"));
  EXPECT_EQ("2", get(store, "two"));
}

// Each but the release of a lock, which never fails.
TEST_F(GvalueTest, a_failing_call_leaves_an_open_store_as_it_was) {
  gvalue_t* store = open();
  set(store, "one", "old");
  for (const Call call : {Call::kFlock, Call::kFcntl, Call::kStat}) {
    Fault fault(call, {.error = EIO});
    const int result = set(store, "one", "new");
    const int error = errno;
    fault.disarm();
    EXPECT_TRUE(fault.fired());
    EXPECT_EQ(0, result) << static_cast<int>(call);
    EXPECT_EQ(call == Call::kStat ? ENOENT : EIO, error) << static_cast<int>(call);
    EXPECT_EQ("old", get(store, "one")) << static_cast<int>(call);
    // Whoever waits for the store's lock gets it.
    EXPECT_EQ(0, run_child([] { return 1 - set(GvalueCreate("store"), "two", "2"); }).status);
  }
}

// ---- The default store ----

class DefaultStoreTest : public GvalueTest {};

TEST_F(DefaultStoreTest, a_null_handle_opens_it_once) {
  EXPECT_EQ(0, run_child([] {
                 EXPECT_EQ(nullptr, GvalueGet(nullptr, "name"));
                 EXPECT_TRUE(exists(store_path("default")));
                 EXPECT_EQ(1, set(nullptr, "name", "value"));
                 Fault fault(Call::kOpen, {.error = EMFILE, .times = kForever});
                 EXPECT_EQ("value", get(nullptr, "name"));
                 EXPECT_EQ(0, fault.calls());
               }).status);
  EXPECT_EQ("value", get(open("default"), "name"));
}

TEST_F(DefaultStoreTest, every_call_fails_with_the_errno_of_its_open) {
  remove_tree("/tmp/.var");
  const auto with_errno = [](auto call) {
    errno = 0;
    const auto result = call();
    EXPECT_EQ(ENOENT, errno);
    return result;
  };
  EXPECT_EQ(nullptr, with_errno([] { return GvalueGet(nullptr, "name"); }));
  EXPECT_EQ(-1, with_errno([] { return GvalueSize(nullptr, "name"); }));
  EXPECT_EQ(0, with_errno([] { return set(nullptr, "name", "value"); }));
  EXPECT_EQ(nullptr, with_errno([] { return GvalueList(nullptr); }));
}

TEST_F(DefaultStoreTest, a_failed_open_is_tried_again) {
  run_child([] {
    remove_tree("/tmp/.var");
    EXPECT_EQ(0, set(nullptr, "name", "value"));
    make_directories("/tmp/.var");
    EXPECT_EQ(1, set(nullptr, "name", "value"));
  });
}

}  // namespace
