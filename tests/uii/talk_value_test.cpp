// Nodes at a path inside a document in memory: put, read, removed, detached.
#include <clocale>
#include <string>

#include "fairlead/uii.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "talk/talk_support.h"

namespace {

using fairlead::OwnedTalk;
using fairlead_test::Call;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::expect_unlinked;
using fairlead_test::text_of;

class TalkUiiTest : public fairlead_test::DeviceTest {
 protected:
  slash_t* path(const char* text) {
    text_ = text;
    SlashAnalysis(&slash_, text_.data());
    return &slash_;
  }

  // Puts a string and tells what the document is then.
  static std::string put(const char* before, const char* path, const char* value) {
    OwnedTalk talk = document(before);
    EXPECT_EQ(1, TalkUiiSet(talk.get(), RenderCreate(value), nullptr, "%s", path));
    return text_of(talk);
  }

  // Removes what stands at the path and tells what the document is then.
  static std::string removed(const char* before, const char* path, int result = 1) {
    OwnedTalk talk = document(before);
    EXPECT_EQ(result, TalkUiiSet(talk.get(), nullptr, nullptr, "%s", path)) << path;
    return text_of(talk);
  }

  static std::string got(const OwnedTalk& talk, const char* path) {
    const char* text = TalkUiiGetS(talk.get(), nullptr, 0, nullptr, "%s", path);
    return text ? text : "null";
  }

  slash_t slash_{};
  std::string text_;
};

// ---- TalkUiiSet ----

TEST_F(TalkUiiTest, set_makes_what_is_missing_and_attaches_the_node_itself) {
  OwnedTalk talk = document("{}");
  talk_t* value = RenderCreate("1");
  EXPECT_EQ(1, TalkUiiSet(talk.get(), value, nullptr, "a/b"));
  EXPECT_EQ("{\"a\":{\"b\":\"1\"}}", text_of(talk));
  EXPECT_EQ(value, TalkUiiGet(talk.get(), nullptr, "a/b"));
}

TEST_F(TalkUiiTest, set_takes_the_path_from_a_record_or_a_format_with_arguments) {
  OwnedTalk talk = document("{}");
  EXPECT_EQ(1, TalkUiiSet(talk.get(), RenderCreate("1"), path("/rec//ord/"), "other"));
  EXPECT_EQ(1, TalkUiiSet(talk.get(), RenderCreate("2"), nullptr, " %s/%d ", "port", 4));
  EXPECT_EQ("{\"rec\":{\"ord\":\"1\"},\"port\":{\"4\":\"2\"}}", text_of(talk));
}

TEST_F(TalkUiiTest, set_replaces_a_value_where_its_member_stands) {
  EXPECT_EQ("{\"a\":\"9\",\"b\":\"2\"}", put("{\"a\":\"1\",\"b\":\"2\"}", "a", "9"));
  EXPECT_EQ("{\"a\":{\"b\":\"9\",\"c\":\"2\"}}", put("{\"a\":{\"b\":{},\"c\":\"2\"}}", "a/b", "9"));
  EXPECT_EQ("{\"a\":\"9\"}", put("{\"a\":[1]}", "a", "9"));
}

TEST_F(TalkUiiTest, set_replaces_what_is_no_object_on_the_way) {
  EXPECT_EQ("{\"a\":{\"b\":\"9\"},\"c\":\"2\"}", put("{\"a\":\"1\",\"c\":\"2\"}", "a/b", "9"));
  EXPECT_EQ("{\"a\":{\"b\":{\"c\":\"9\"}}}", put("{\"a\":[1,2]}", "a/b/c", "9"));
  OwnedTalk talk = document("{\"a\":\"1\"}");
  ASSERT_EQ(1, VesselClearX(talk.get(), "a"));  // a member without a value
  EXPECT_EQ(1, TalkUiiSet(talk.get(), RenderCreate("9"), nullptr, "a/b"));
  EXPECT_EQ("{\"a\":{\"b\":\"9\"}}", text_of(talk));
}

TEST_F(TalkUiiTest, set_appends_new_members_and_means_the_first_namesake) {
  EXPECT_EQ("{\"a\":{\"x\":\"1\",\"y\":\"9\"}}", put("{\"a\":{\"x\":\"1\"}}", "a/y", "9"));
  EXPECT_EQ("{\"a\":\"9\",\"a\":\"2\"}", put("{\"a\":\"1\",\"a\":\"2\"}", "a", "9"));
}

TEST_F(TalkUiiTest, set_takes_values_of_any_kind) {
  OwnedTalk talk = document("{}");
  EXPECT_EQ(1, TalkUiiSet(talk.get(), document("{\"x\":{}}").release(), nullptr, "object"));
  EXPECT_EQ(1, TalkUiiSet(talk.get(), json_new_number("7"), nullptr, "number"));
  EXPECT_EQ(1, TalkUiiSet(talk.get(), json_new_array(), nullptr, "array"));
  EXPECT_EQ(1, TalkUiiSet(talk.get(), json_new_true(), nullptr, "true"));
  EXPECT_EQ("{\"object\":{\"x\":{}},\"number\":7,\"array\":[],\"true\":true}", text_of(talk));
}

TEST_F(TalkUiiTest, a_null_value_removes_the_member) {
  EXPECT_EQ("{\"b\":\"2\"}", removed("{\"a\":{\"x\":\"1\"},\"b\":\"2\"}", "a"));
  EXPECT_EQ("{\"a\":{},\"b\":\"2\"}", removed("{\"a\":{\"x\":\"1\"},\"b\":\"2\"}", "a/x"));
  EXPECT_EQ("{\"a\":\"2\"}", removed("{\"a\":\"1\",\"a\":\"2\"}", "a"));
}

TEST_F(TalkUiiTest, removing_what_is_missing_changes_nothing) {
  const char* before = "{\"a\":\"1\",\"b\":{\"c\":\"2\"}}";
  for (const char* missing : {"x", "x/y", "a/x", "a/x/y", "b/x", "b/c/x"})
    EXPECT_EQ(before, removed(before, missing, 0)) << missing;
}

TEST_F(TalkUiiTest, set_refuses_paths_without_segments) {
  OwnedTalk talk = document("{\"a\":\"1\"}");
  const OwnedTalk value(RenderCreate("9"));
  const char* empty = "";
  slash_t nowhere = {};
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), value.get(), nullptr, nullptr));
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), value.get(), nullptr, empty, ""));
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), value.get(), nullptr, " // "));
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), value.get(), &nowhere, "a"));
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), nullptr, nullptr, nullptr));
  EXPECT_REFUSED(0, TalkUiiSet(talk.get(), nullptr, &nowhere, nullptr));
  EXPECT_EQ("{\"a\":\"1\"}", text_of(talk));
  expect_unlinked(value.get());
}

TEST_F(TalkUiiTest, set_refuses_documents_that_are_no_object) {
  const OwnedTalk value(RenderCreate("9")), string(RenderCreate("a")), array(json_new_array());
  for (talk_t* wrong : {static_cast<talk_t*>(nullptr), string.get(), array.get()}) {
    EXPECT_REFUSED(0, TalkUiiSet(wrong, value.get(), nullptr, "a"));
    EXPECT_REFUSED(0, TalkUiiSet(wrong, nullptr, nullptr, "a"));
    EXPECT_REFUSED(0, TalkUiiSetS(wrong, "9", nullptr, "a"));
  }
  expect_unlinked(value.get());
}

// Neither tree is torn, and the value that was there before stays.
TEST_F(TalkUiiTest, a_value_that_cannot_stand_there_stays_the_callers_and_changes_nothing) {
  const std::string before = "{\"a\":\"1\",\"b\":{\"c\":\"2\"}}";
  OwnedTalk talk = document(before), other = document("{\"m\":{\"n\":\"3\"}}");
  const OwnedTalk member(AxpCreate("name", RenderCreate("value")));
  talk_t* linked = VesselGetX(other.get(), "m");
  for (talk_t* value : {member.get(), linked, talk.get()})
    for (const char* where : {"a", "b/c", "new", "b/new", "new/x/y", "a/x/y"})
      EXPECT_EQ(0, TalkUiiSet(talk.get(), value, nullptr, "%s", where)) << where;
  EXPECT_EQ(before, text_of(talk));
  EXPECT_EQ("{\"m\":{\"n\":\"3\"}}", text_of(other));
  // The same for a document whose own part is the one to change.
  EXPECT_REFUSED(0, TalkUiiSet(VesselGetX(talk.get(), "b"), talk.get(), nullptr, "d"));
  expect_unlinked(member.get());
}

TEST_F(TalkUiiTest, a_set_without_memory_changes_nothing) {
  const std::string before = "{\"a\":\"1\",\"b\":{\"c\":\"2\"}}";
  const std::pair<const char*, int> places[] = {
      {"b/x/y/z", 5}, {"a/x/y", 4}, {"new", 1}, {"b/c", 0}};
  for (const auto& [where, allocations] : places) {
    int failures = 0;
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
      OwnedTalk talk = document(before), value(RenderCreate("9"));
      const int result = each.run(
          [&, where = where] { return TalkUiiSet(talk.get(), value.get(), nullptr, "%s", where); });
      EXPECT_EQ(each.fired() ? 0 : 1, result) << where << each.nth();
      EXPECT_EQ(each.fired(), before == text_of(talk)) << where << each.nth();
      if (result == 1) {
        (void)value.release();
      } else {
        expect_unlinked(value.get());
      }
    }
    EXPECT_EQ(allocations, failures) << where;
  }
}

TEST_F(TalkUiiTest, a_path_is_cut_at_255_characters) {
  OwnedTalk talk = document("{}");
  const std::string name(300, 'n');
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), "9", nullptr, "%s", name.c_str()));
  EXPECT_STREQ("9", VesselGetS(talk.get(), name.substr(0, 255).c_str()));
  EXPECT_STREQ("9", RenderString(TalkUiiGet(talk.get(), nullptr, "%s", name.c_str())));
}

TEST_F(TalkUiiTest, a_refused_format_addresses_nothing) {
  const wchar_t unspeakable[] = {static_cast<wchar_t>(0x110000), 0};
  OwnedTalk talk = document("{\"a\":\"1\"}");
  const OwnedTalk value(RenderCreate("9"));
  EXPECT_FAILS(EILSEQ, 0, TalkUiiSet(talk.get(), value.get(), nullptr, "%ls", unspeakable));
  EXPECT_FAILS(EILSEQ, 0, TalkUiiSet(talk.get(), nullptr, nullptr, "a%ls", unspeakable));
  EXPECT_FAILS(EILSEQ, 0, TalkUiiSetS(talk.get(), "9", nullptr, "a%ls", unspeakable));
  EXPECT_FAILS(EILSEQ, nullptr, TalkUiiGet(talk.get(), nullptr, "%ls", unspeakable));
  EXPECT_FAILS(EILSEQ, nullptr, TalkUiiGetS(talk.get(), nullptr, 0, nullptr, "%ls", unspeakable));
  EXPECT_FAILS(EILSEQ, nullptr, TalkUiiCut(talk.get(), nullptr, "%ls", unspeakable));
  EXPECT_EQ("{\"a\":\"1\"}", text_of(talk));
}

// ---- TalkUiiSetS ----

TEST_F(TalkUiiTest, set_text_makes_a_string_or_an_object) {
  OwnedTalk talk = document("{}");
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), "  plain [text] ", nullptr, "a/%s", "b"));
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), " {\"x\":\"1\"} ", path("c"), "other"));
  EXPECT_EQ("{\"a\":{\"b\":\"plain [text] \"},\"c\":{\"x\":\"1\"}}", text_of(talk));
}

// Where the configuration store would delete, this family refuses.
TEST_F(TalkUiiTest, set_text_refuses_no_text_and_broken_objects) {
  OwnedTalk talk = document("{\"a\":\"1\"}");
  for (const char* wrong : {static_cast<const char*>(nullptr), "", " \n", "{broken", "{} x"})
    EXPECT_REFUSED(0, TalkUiiSetS(talk.get(), wrong, nullptr, "a"));
  EXPECT_REFUSED(0, TalkUiiSetS(talk.get(), "9", nullptr, nullptr));
  EXPECT_REFUSED(0, TalkUiiSetS(talk.get(), "9", nullptr, "/"));
  EXPECT_EQ("{\"a\":\"1\"}", text_of(talk));
}

TEST_F(TalkUiiTest, set_text_and_get_text_format_their_path_a_second_time) {
  OwnedTalk talk = document("{}");
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), "1", nullptr, "%s", "100%%"));
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), "2", nullptr, "%s", "%s%d"));  // no argument is read
  EXPECT_EQ(1, TalkUiiSetS(talk.get(), "3", path("50%%"), nullptr));  // records are taken as is
  EXPECT_EQ("{\"100%\":\"1\",\"%s%d\":\"2\",\"50%%\":\"3\"}", text_of(talk));
  EXPECT_EQ("1", got(talk, "100%%"));
  EXPECT_EQ("2", got(talk, "%s%d"));
  EXPECT_NE(nullptr, TalkUiiGet(talk.get(), nullptr, "%s", "100%"));
  EXPECT_EQ(nullptr, TalkUiiGet(talk.get(), nullptr, "%s", "100%%"));
}

TEST_F(TalkUiiTest, set_text_without_memory_changes_nothing) {
  const std::string before = "{\"a\":\"1\"}";
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    OwnedTalk talk = document(before);
    const int result =
        each.run([&] { return TalkUiiSetS(talk.get(), "{\"x\":\"9\"}", nullptr, "a/b"); });
    EXPECT_EQ(each.fired() ? 0 : 1, result) << each.nth();
    EXPECT_EQ(each.fired() ? before : "{\"a\":{\"b\":{\"x\":\"9\"}}}", text_of(talk));
  }
  EXPECT_GE(failures, 4);
}

// ---- TalkUiiGet ----

TEST_F(TalkUiiTest, get_lends_the_node_at_the_path) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\",\"b\":\"2\"},\"c\":[7]}");
  EXPECT_STREQ("1", RenderString(TalkUiiGet(talk.get(), nullptr, "a/%c", 'b')));
  EXPECT_EQ(VesselGetX(talk.get(), "a"), TalkUiiGet(talk.get(), path("a"), "c"));
  EXPECT_EQ(VesselGetX(talk.get(), "c"), TalkUiiGet(talk.get(), nullptr, "c"));
}

TEST_F(TalkUiiTest, get_of_an_empty_or_missing_path_is_the_document) {
  OwnedTalk talk = document("{\"a\":\"1\"}");
  slash_t nowhere = {};
  EXPECT_EQ(talk.get(), TalkUiiGet(talk.get(), nullptr, "/"));
  EXPECT_EQ(talk.get(), TalkUiiGet(talk.get(), &nowhere, "a"));
  EXPECT_EQ(talk.get(), TalkUiiGet(talk.get(), nullptr, nullptr));
}

TEST_F(TalkUiiTest, get_finds_nothing_where_a_member_or_a_value_is_missing) {
  OwnedTalk talk = document("{\"a\":\"1\",\"b\":{\"c\":\"2\"},\"d\":[1]}");
  for (const char* missing : {"x", "x/y", "a/x", "b/x", "b/c/x", "d/x"})
    EXPECT_REFUSED(nullptr, TalkUiiGet(talk.get(), nullptr, "%s", missing));
  ASSERT_EQ(1, VesselClearX(talk.get(), "a"));
  EXPECT_ERRNO_KEPT(nullptr, TalkUiiGet(talk.get(), nullptr, "a"));
}

TEST_F(TalkUiiTest, reading_refuses_documents_that_are_no_object) {
  const OwnedTalk string(RenderCreate("a")), array(json_new_array());
  for (talk_t* wrong : {static_cast<talk_t*>(nullptr), string.get(), array.get()})
    for (const char* where : {"a", "/"}) {
      EXPECT_REFUSED(nullptr, TalkUiiGet(wrong, nullptr, "%s", where));
      EXPECT_REFUSED(nullptr, TalkUiiGetS(wrong, nullptr, 0, nullptr, "%s", where));
      EXPECT_REFUSED(nullptr, TalkUiiCut(wrong, nullptr, "%s", where));
      EXPECT_REFUSED(nullptr, TalkUiiGet(wrong, nullptr, nullptr));
      EXPECT_REFUSED(nullptr, TalkUiiCut(wrong, nullptr, nullptr));
    }
}

// ---- TalkUiiGetS ----

TEST_F(TalkUiiTest, get_text_gives_strings_and_objects) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\"},\"n\":7,\"l\":[1],\"t\":true,\"o\":null}");
  EXPECT_EQ("{\"b\":\"1\"}", got(talk, "a"));
  EXPECT_EQ("1", got(talk, "a/b"));
  EXPECT_EQ(text_of(talk), got(talk, "/"));
  for (const char* other : {"n", "l", "t", "o", "x", "a/b/c"}) EXPECT_EQ("null", got(talk, other));
}

TEST_F(TalkUiiTest, get_text_copies_into_the_callers_buffer_and_cuts) {
  OwnedTalk talk = document("{\"a\":\"12345\"}");
  char buffer[8] = "#######";
  EXPECT_EQ(buffer, TalkUiiGetS(talk.get(), buffer, 8, nullptr, "a"));
  EXPECT_STREQ("12345", buffer);
  EXPECT_EQ(buffer, TalkUiiGetS(talk.get(), buffer, 4, path("a"), nullptr));
  EXPECT_STREQ("123", buffer);
  EXPECT_EQ(buffer, TalkUiiGetS(talk.get(), buffer, 1, nullptr, "a"));
  EXPECT_STREQ("", buffer);
}

TEST_F(TalkUiiTest, get_text_ends_the_last_byte_behind_a_short_text_too) {
  OwnedTalk talk = document("{\"a\":\"12\"}");
  char buffer[] = "#########";
  EXPECT_STREQ("12", TalkUiiGetS(talk.get(), buffer, 8, nullptr, "a"));
  EXPECT_EQ('\0', buffer[7]);
  EXPECT_EQ('#', buffer[8]);
}

TEST_F(TalkUiiTest, get_text_without_a_buffer_uses_one_of_4096_bytes) {
  OwnedTalk talk = document("{}");
  ASSERT_EQ(1, TalkUiiSetS(talk.get(), std::string(5000, 'x').c_str(), nullptr, "a"));
  char buffer[8] = "#######";
  const char* first = TalkUiiGetS(talk.get(), nullptr, 8, nullptr, "a");
  EXPECT_EQ(std::string(4095, 'x'), first);
  EXPECT_EQ(first, TalkUiiGetS(talk.get(), buffer, 0, nullptr, "a"));
  EXPECT_EQ(first, TalkUiiGetS(talk.get(), buffer, -1, nullptr, "a"));
  EXPECT_STREQ("#######", buffer);
}

TEST_F(TalkUiiTest, get_text_needs_a_path) {
  OwnedTalk talk = document("{\"a\":\"1\"}");
  EXPECT_REFUSED(nullptr, TalkUiiGetS(talk.get(), nullptr, 0, nullptr, nullptr));
}

TEST_F(TalkUiiTest, get_text_without_memory_is_whole_or_null) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\"}}");
  int lost = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    const char* text =
        each.run([&] { return TalkUiiGetS(talk.get(), nullptr, 0, nullptr, "%s", "a"); });
    EXPECT_STREQ(text ? "{\"b\":\"1\"}" : nullptr, text);
    lost += text ? 0 : 1;
  }
  EXPECT_GE(lost, 1);
}

// Nothing that can be lost on the way would turn the path into the whole document.
TEST_F(TalkUiiTest, get_and_cut_need_no_memory) {
  OwnedTalk talk = document("{\"a\":\"1\"}");
  fairlead_test::Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_EQ(VesselGetX(talk.get(), "a"), TalkUiiGet(talk.get(), nullptr, "a"));
  talk_t* value = TalkUiiCut(talk.get(), nullptr, "a");
  fault.disarm();
  EXPECT_STREQ("1", RenderString(value));
  if (value != talk.get()) TalkFree(value);
}

// ---- TalkUiiCut ----

TEST_F(TalkUiiTest, cut_hands_over_the_value_and_leaves_its_member) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\"}}");
  const OwnedTalk value(TalkUiiCut(talk.get(), nullptr, "a/b"));
  expect_unlinked(value.get());
  EXPECT_STREQ("1", RenderString(value.get()));
  axp_t* member = VesselFind(VesselGetX(talk.get(), "a"), "b");
  ASSERT_NE(nullptr, member);
  EXPECT_EQ(nullptr, AxpGetX(member));
  EXPECT_REFUSED(nullptr, TalkUiiCut(talk.get(), nullptr, "a/b"));  // there is no value any more
}

TEST_F(TalkUiiTest, cut_takes_objects_too_and_a_record_wins) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\"},\"c\":\"2\"}");
  const OwnedTalk value(TalkUiiCut(talk.get(), path("a"), "c"));
  EXPECT_EQ("{\"b\":\"1\"}", text_of(value));
  EXPECT_STREQ("2", VesselGetS(talk.get(), "c"));
}

TEST_F(TalkUiiTest, cut_of_an_empty_or_missing_path_is_the_document_itself) {
  OwnedTalk talk = document("{\"a\":{\"b\":\"1\"}}");
  talk_t* part = VesselGetX(talk.get(), "a");
  slash_t nowhere = {};
  EXPECT_EQ(part, TalkUiiCut(part, nullptr, "//"));
  EXPECT_EQ(part, TalkUiiCut(part, &nowhere, "b"));
  EXPECT_EQ(part, TalkUiiCut(part, nullptr, nullptr));
  EXPECT_EQ("{\"a\":{\"b\":\"1\"}}", text_of(talk));
}

TEST_F(TalkUiiTest, cut_finds_nothing_where_there_is_nothing) {
  OwnedTalk talk = document("{\"a\":\"1\",\"b\":{}}");
  for (const char* missing : {"x", "x/y", "a/x", "b/x"})
    EXPECT_REFUSED(nullptr, TalkUiiCut(talk.get(), nullptr, "%s", missing));
  EXPECT_EQ("{\"a\":\"1\",\"b\":{}}", text_of(talk));
}

}  // namespace
