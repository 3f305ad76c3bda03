// Merging: strings overwrite, objects merge, what only the target has stays.
#include "edit_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::deep_document;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::innermost;
using fairlead_test::kForever;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;
using fairlead_test::wide_document;

struct Merged {
  int result;
  std::string text;
  bool operator==(const Merged&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Merged& merged) {
  return out << merged.result << " " << merged.text;
}

class ModifyTest : public fairlead_test::DeviceTest {
 protected:
  // Merges, after which the source must be as it was.
  static Merged merge(const std::string& source_text, const std::string& target_text) {
    OwnedTalk source = document(source_text);
    OwnedTalk target = document(target_text);
    errno = fairlead_test::kStaleErrno;
    const int result = VesselModify(source.get(), target.get());
    EXPECT_EQ(fairlead_test::kStaleErrno, errno);
    EXPECT_EQ(source_text, text_of(source));
    fairlead_test::names_of(target.get());
    return {result, text_of(target)};
  }
};

// The merge as its rules tell it, step by step.
int merge_step_by_step(talk_t* source, talk_t* target);

int merge_member_step_by_step(axp_t* source, axp_t* target) {
  talk_t* value = AxpGetX(source);
  if (value && RenderCheck(value)) return AxpSetS(target, RenderString(value));
  if (!value || !VesselCheck(value)) return 0;
  int replaced = 0;
  if (!AxpGetX(target) || !VesselCheck(AxpGetX(target))) replaced = AxpSetX(target, VesselCreate());
  const int inner = merge_step_by_step(value, AxpGetX(target));
  return inner ? inner : replaced;
}

int merge_step_by_step(talk_t* source, talk_t* target) {
  int result = 0;
  for (axp_t* member = VesselEach(source, nullptr); member; member = VesselEach(source, member)) {
    axp_t* own = VesselFind(target, AxpGet(member));
    if (!own) {
      VesselAdd(target, AxpCreate(AxpGet(member), VesselCreate()));
      own = VesselTurn(target, nullptr);
    }
    const int changed = merge_member_step_by_step(member, own);
    if (changed) result = changed;
  }
  return result;
}

TEST_F(ModifyTest, a_string_overwrites_and_a_new_member_goes_to_the_end) {
  EXPECT_EQ((Merged{1, R"({"a":"1","b":"2"})"}), merge(R"({"a":"1"})", R"({"a":"0","b":"2"})"));
  EXPECT_EQ((Merged{1, R"({"a":"1","b":"2","c":{"d":"4"}})"}),
            merge(R"({"c":{"d":"4"}})", R"({"a":"1","b":"2"})"));
  EXPECT_EQ((Merged{1, R"({"x":"0","b":"1","a":"2"})"}),
            merge(R"({"b":"1","a":"2"})", R"({"x":"0"})"));
}

TEST_F(ModifyTest, an_equal_string_counts_as_a_change) {
  EXPECT_EQ((Merged{1, R"({"a":"1"})"}), merge(R"({"a":"1"})", R"({"a":"1"})"));
}

TEST_F(ModifyTest, an_object_overwrites_a_string_and_merges_into_an_object) {
  EXPECT_EQ((Merged{1, R"({"a":{"x":"1"}})"}), merge(R"({"a":{"x":"1"}})", R"({"a":"0"})"));
  EXPECT_EQ((Merged{1, R"({"a":{"y":"0","x":"1"}})"}),
            merge(R"({"a":{"x":"1"}})", R"({"a":{"y":"0"}})"));
  EXPECT_EQ((Merged{1, R"({"a":"1"})"}), merge(R"({"a":"1"})", R"({"a":{"x":{"y":"z"}}})"));
}

TEST_F(ModifyTest, an_empty_object_counts_only_where_it_replaces) {
  EXPECT_EQ((Merged{0, R"({"e":{}})"}), merge(R"({"e":{}})", "{}"));
  EXPECT_EQ((Merged{0, R"({"e":{"x":"1"}})"}), merge(R"({"e":{}})", R"({"e":{"x":"1"}})"));
  EXPECT_EQ((Merged{1, R"({"e":{}})"}), merge(R"({"e":{}})", R"({"e":"1"})"));
  EXPECT_EQ((Merged{1, R"({"e":{}})"}), merge(R"({"e":{}})", R"({"e":[1]})"));
}

TEST_F(ModifyTest, an_empty_source_changes_nothing) {
  EXPECT_EQ((Merged{0, R"({"a":"1"})"}), merge("{}", R"({"a":"1"})"));
}

TEST_F(ModifyTest, values_without_a_role_change_nothing_but_leave_an_empty_object) {
  EXPECT_EQ((Merged{0, R"({"a":"1"})"}), merge(R"({"a":1})", R"({"a":"1"})"));
  EXPECT_EQ((Merged{0, R"({"a":{},"b":{},"c":{}})"}), merge(R"({"a":1,"b":[1],"c":null})", "{}"));
}

TEST_F(ModifyTest, the_first_namesake_takes_every_change) {
  EXPECT_EQ((Merged{1, R"({"a":"2","a":"0"})"}),
            merge(R"({"a":"1","a":"2"})", R"({"a":"9","a":"0"})"));
  EXPECT_EQ((Merged{1, R"({"a":{"x":"1","y":"2"}})"}),
            merge(R"({"a":{"x":"1"},"a":{"y":"2"}})", "{}"));
}

TEST_F(ModifyTest, a_change_counts_though_later_members_change_nothing) {
  EXPECT_EQ((Merged{1, R"({"a":"1","b":{}})"}), merge(R"({"a":"1","b":1})", R"({"a":"0"})"));
}

TEST_F(ModifyTest, an_empty_name_is_a_name) {
  EXPECT_EQ((Merged{1, R"({"":"1"})"}), merge(R"({"":"1"})", "{}"));
}

TEST_F(ModifyTest, a_member_without_a_value_changes_nothing) {
  OwnedTalk source = document(R"({"a":"1"})");
  OwnedTalk target = document(R"({"a":"0"})");
  AxpClearX(source->child);
  EXPECT_EQ(0, VesselModify(source.get(), target.get()));
  EXPECT_EQ(R"({"a":"0"})", text_of(target));
  EXPECT_EQ(1, VesselModify(target.get(), source.get())) << "and takes a value";
  EXPECT_EQ(R"({"a":"0"})", text_of(source));
}

TEST_F(ModifyTest, a_member_without_a_name_is_passed_over) {
  OwnedTalk source = document(R"({"a":"1"})");
  OwnedTalk target = document(R"({"a":"0"})");
  axp_t* bare = json_new_value(JSON_STRING);
  AxpSetX(bare, RenderCreate("2"));
  VesselAdd(source.get(), bare);
  EXPECT_EQ(1, VesselModify(source.get(), target.get()));
  EXPECT_EQ(R"({"a":"1"})", text_of(target));
}

TEST_F(ModifyTest, a_document_merged_with_itself_stays) {
  OwnedTalk twice = document(R"({"a":"1","b":{"c":"2"},"a":{"d":"3"}})");
  EXPECT_EQ(1, VesselModify(twice.get(), twice.get()));
  EXPECT_EQ(R"({"a":{"d":"3"},"b":{"c":"2"},"a":{"d":"3"}})", text_of(twice));
}

TEST_F(ModifyTest, what_is_no_object_is_refused) {
  OwnedTalk vessel(VesselCreate());
  OwnedTalk render(RenderCreate("x"));
  for (talk_t* other : {render.get(), static_cast<talk_t*>(nullptr)}) {
    EXPECT_REFUSED(-1, VesselModify(vessel.get(), other));
    EXPECT_REFUSED(-1, VesselModify(other, vessel.get()));
  }
}

TEST_F(ModifyTest, axp_modify_merges_values_whatever_the_names) {
  OwnedTalk source = document(R"({"a":"1","b":{"x":"2"},"c":1,"d":{}})");
  OwnedTalk target(AxpCreate("t", RenderCreate("0")));
  const auto apply = [&](const char* name) {
    return AxpModify(VesselFind(source.get(), name), target.get());
  };
  EXPECT_EQ(1, apply("a"));
  EXPECT_STREQ("1", AxpGetS(target.get()));
  EXPECT_EQ(0, apply("c"));
  EXPECT_STREQ("1", AxpGetS(target.get()));
  EXPECT_EQ(1, apply("d")) << "replaced by an object";
  EXPECT_EQ(0, apply("d")) << "is an object already";
  EXPECT_EQ(1, apply("b"));
  EXPECT_EQ(R"({"x":"2"})", text_of(AxpGetX(target.get())));
  EXPECT_STREQ("t", AxpGet(target.get()));
}

TEST_F(ModifyTest, axp_modify_accepts_members_without_a_value) {
  OwnedTalk source(json_new_string("s"));
  OwnedTalk target(json_new_string("t"));
  EXPECT_ERRNO_KEPT(0, AxpModify(source.get(), target.get()));
  AxpSetS(source.get(), "1");
  EXPECT_EQ(1, AxpModify(source.get(), target.get()));
  EXPECT_STREQ("1", AxpGetS(target.get()));
}

TEST_F(ModifyTest, axp_modify_refuses_what_is_no_string_node) {
  OwnedTalk member(AxpCreate("a", RenderCreate("1")));
  OwnedTalk vessel(VesselCreate());
  for (talk_t* other : {vessel.get(), static_cast<talk_t*>(nullptr)}) {
    EXPECT_REFUSED(-1, AxpModify(member.get(), other));
    EXPECT_REFUSED(-1, AxpModify(other, member.get()));
  }
}

TEST_F(ModifyTest, random_documents_merge_as_step_by_step) {
  fairlead_test::RandomDocuments random(1);
  for (int size : {1, 3, 10, 300, 700}) {
    for (int round = 0; round < (size < 100 ? 20 : 2); ++round) {
      OwnedTalk source = random.next(size, size, size < 100 ? 3 : 1);
      OwnedTalk target = random.next(size, size, size < 100 ? 3 : 1);
      OwnedTalk expected(VesselDup(target.get()));  // without what has no role, but with namesakes
      OwnedTalk own(VesselDup(target.get()));
      const int result = merge_step_by_step(source.get(), expected.get());
      EXPECT_EQ(result, VesselModify(source.get(), own.get()));
      ASSERT_EQ(text_of(expected), text_of(own)) << "size " << size << ", round " << round;
    }
  }
}

TEST_F(ModifyTest, documents_that_are_alike_merge_as_step_by_step) {
  fairlead_test::AlikeDocuments alike(5);
  for (int members : {2, 15, 16, 17, 18, 40, 200}) {
    for (int round = 0; round < 60; ++round) {
      const auto [source, target] = alike.next(members, round % 2 == 0);
      OwnedTalk expected(VesselDup(target.get()));
      const int result = merge_step_by_step(source.get(), expected.get());
      EXPECT_EQ(result, VesselModify(source.get(), target.get()));
      ASSERT_EQ(text_of(expected), text_of(target)) << members << " members, round " << round;
    }
  }
}

TEST_F(ModifyTest, a_string_overwrites_another_of_any_length) {
  OwnedTalk target = document(R"({"a":""})");
  for (size_t length :
       std::initializer_list<size_t>{0, 1, 7, 8, 9, 15, 16, 300, 17, 16, 8, 7, 1, 0, 300}) {
    const std::string text(length, 'x');
    const std::string source = "{\"a\":\"" + text + "\"}";
    EXPECT_EQ(1, VesselModify(document(source).get(), target.get()));
    EXPECT_EQ(source, text_of(target));
    EXPECT_EQ(1, TalkEqual(document(source).get(), target.get()));
  }
}

TEST_F(ModifyTest, replaced_objects_are_not_taken_for_new_ones) {
  OwnedTalk source(VesselCreate());
  for (int i = 0; i < 300; ++i) {
    axp_t* object = AxpCreate("big", wide_document(0, 300).release());
    VesselAdd(source.get(), object);
    VesselAdd(source.get(), AxpCreate("big", RenderCreate("gone")));
    if (i == 0) VesselAdd(source.get(), AxpCreate("other", wide_document(0, 300).release()));
  }
  VesselAdd(source.get(), AxpCreate("big", wide_document(100, 300).release()));
  OwnedTalk target(VesselCreate());
  EXPECT_EQ(1, VesselModify(source.get(), target.get()));
  EXPECT_EQ(1, TalkEqual(VesselGetX(target.get(), "big"), wide_document(100, 300).get()));
}

TEST_F(ModifyTest, lost_memory_counts_as_minus_one_and_costs_only_its_member) {
  OwnedTalk source = document(R"({"a":"1","b":{"x":"2"},"c":"3"})");
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    OwnedTalk target = document(R"({"a":"0","c":{"y":"4"}})");
    const int result = each.run([&] { return VesselModify(source.get(), target.get()); });
    const std::string text = text_of(target);
    if (!each.fired()) {
      EXPECT_EQ(1, result);
      EXPECT_EQ(R"({"a":"1","c":"3","b":{"x":"2"}})", text);
    } else {
      EXPECT_EQ(text.find(R"("c":{"y":"4"})") != std::string::npos ? -1 : 1, result) << text;
    }
  }
}

TEST_F(ModifyTest, the_last_result_that_is_not_zero_wins) {
  OwnedTalk source = document(R"({"a":"longer than before","e":{}})");
  OwnedTalk target = document(R"({"a":"0","e":{}})");
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = kForever});
  EXPECT_FAILS(ENOMEM, -1, VesselModify(source.get(), target.get()));
  fault.disarm();
  EXPECT_EQ(R"({"a":"0","e":{}})", text_of(target));
}

TEST_F(ModifyTest, a_lost_allocation_never_doubles_a_member) {
  OwnedTalk source(VesselCreate());  // every name twice, so that the second makes up for a loss
  for (int i = 880; i < 1060; ++i)
    for (int twice = 0; twice < 2; ++twice)
      VesselAdd(source.get(), AxpCreate(std::to_string(i).c_str(), RenderCreate("x")));
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    OwnedTalk target = wide_document(0, 900, "y");
    each.run([&] { return VesselModify(source.get(), target.get()); });
    EXPECT_EQ(1060, VesselCount(target.get())) << each.nth();
  }
}

TEST_F(ModifyTest, replaced_objects_are_not_taken_for_new_ones_where_memory_is_lost) {
  OwnedTalk source(VesselCreate());
  VesselSetX(source.get(), "long", wide_document(700, 20).release());  // so long that an index pays
  for (int round = 0; round < 2; ++round) {
    VesselAdd(source.get(), AxpCreate("big", wide_document(0, 40).release()));
    if (round == 0) VesselAdd(source.get(), AxpCreate("big", RenderCreate("gone")));
  }
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    OwnedTalk target(VesselCreate());
    VesselSetX(target.get(), "long", wide_document(0, 720).release());
    VesselSetX(target.get(), "big", wide_document(0, 40, "old").release());
    each.run([&] { return VesselModify(source.get(), target.get()); });
    talk_t* big = VesselGetX(target.get(), "big");
    const int lost =
        RenderCheck(big) ? 1 : 40 - VesselCount(big);  // the object itself, or a member
    EXPECT_TRUE(lost == 0 || (each.fired() && lost == 1)) << each.nth() << ": " << lost;
  }
}

TEST_F(ModifyTest, a_merge_without_memory_for_an_index_is_the_same) {
  OwnedTalk source(VesselCreate());
  for (int i = 0; i < 1000; ++i)
    VesselAdd(source.get(), AxpCreate(std::to_string(999 - i).c_str(), VesselCreate()));
  OwnedTalk target(VesselDup(source.get()));
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = kForever});
  EXPECT_ERRNO_KEPT(0, VesselModify(source.get(), target.get()));
  EXPECT_TRUE(fault.fired()) << "an index was wanted";
  EXPECT_EQ(1000, VesselCount(target.get()));
}

TEST_F(ModifyTest, depth_costs_no_stack) {
  OwnedTalk source = deep_document(RenderCreate("new"));
  OwnedTalk same = deep_document(RenderCreate("old"));
  OwnedTalk shallow = document(R"({"a":"0"})");
  fairlead_test::run_on_small_stack(fairlead_test::kSmallStackKib, [&] {
    EXPECT_EQ(1, VesselModify(source.get(), same.get()));
    EXPECT_EQ(1, AxpModify(source->child, shallow->child));
  });
  EXPECT_STREQ("new", RenderString(innermost(same)));
  EXPECT_STREQ("new", RenderString(innermost(shallow)));
}

TEST_F(ModifyTest, time_grows_with_the_number_of_members) {
  const auto seconds = [](int members) {
    OwnedTalk source = wide_document(members / 2, members);
    OwnedTalk target = wide_document(0, members);
    const double taken =
        fairlead_test::seconds_of([&] { EXPECT_EQ(1, VesselModify(source.get(), target.get())); });
    EXPECT_EQ(members / 2 * 3, VesselCount(target.get()));
    return taken;
  };
  const double few = seconds(10000);
  EXPECT_LT(seconds(100000), 50 * few + 0.5);
}

}  // namespace
