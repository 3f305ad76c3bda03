// Nodes that share blocks: fewer allocations, and nobody sees it otherwise.
#include <algorithm>
#include <thread>

#include "edit_support.h"
#include "fairlead/talk/json.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;

#ifdef FAIRLEAD_SANITIZED
constexpr int kNodesPerBlock = 1;  // so that the sanitizer sees each
#else
constexpr int kNodesPerBlock = 10;
#endif

class NodePoolTest : public fairlead_test::DeviceTest {
 protected:
  // {"m0":{"a":"0"},"m1":{"a":"1"}, ...}: four nodes for each member.
  static std::string members(int count, const std::string& tail = "") {
    std::string text = "{";
    for (int i = 0; i < count; ++i)
      text += (i ? ",\"m" : "\"m") + std::to_string(i) + "\":{\"a\":\"" + std::to_string(i) + tail +
              "\"}";
    return text + "}";
  }

  template <class Action>
  static int allocations(Action action) {
    Fault counter(Call::kMalloc, {.nth = 0});
    action();
    const int calls = counter.calls();
    counter.disarm();
    return calls;
  }
};

TEST_F(NodePoolTest, a_small_document_has_a_block_for_each_node_at_most) {
  json_t* root = nullptr;
  const int calls = allocations(
      [&] { json_parse_document(&root, R"({"a":"b","c\n":["\u00e9",1,true,{}],"d":null})"); });
  const OwnedTalk owner(root);
  EXPECT_LE(calls, 11);
}

TEST_F(NodePoolTest, a_document_that_is_read_shares_its_blocks) {
  const std::string text = members(1000);
  json_t* root = nullptr;
  const int calls = allocations([&] { json_parse_document(&root, text.c_str()); });
  const OwnedTalk owner(root);
  EXPECT_LE(calls, 4001 / kNodesPerBlock);
  EXPECT_EQ(text, text_of(owner));
}

TEST_F(NodePoolTest, a_document_in_pieces_of_a_byte_shares_its_blocks) {
  const std::string text = members(1000);
  json_jpi_t info;
  json_jpi_init(&info);
  const int calls = allocations([&] {
    for (const char byte : text) json_parse_fragment(&info, std::string(1, byte).c_str());
  });
  const OwnedTalk owner(info.cursor);
  EXPECT_LE(calls, static_cast<int>(text.size()) / 2 + 4001 / kNodesPerBlock);
  EXPECT_EQ(text, text_of(owner));
}

TEST_F(NodePoolTest, a_copy_shares_its_blocks) {
  const OwnedTalk source = document(members(1000));
  OwnedTalk copy;
  const int calls = allocations([&] { copy.reset(TalkDup(source.get())); });
  EXPECT_LE(calls, 4001 / kNodesPerBlock);
  EXPECT_EQ(text_of(source), text_of(copy));
}

TEST_F(NodePoolTest, what_is_taken_out_outlives_the_rest) {
  for (int kept = 0; kept < 100; kept += 7) {
    OwnedTalk whole = document(members(100));
    const std::string name = "m" + std::to_string(kept);
    const OwnedTalk member(VesselCut(whole.get(), name.c_str()));
    whole.reset();
    ASSERT_TRUE(member);
    EXPECT_EQ(std::to_string(kept), VesselGetS(AxpGetX(member.get()), "a"));
  }
}

TEST_F(NodePoolTest, freeing_in_any_order_frees_all) {
  OwnedTalk whole = document(members(200));
  for (int step : {3, 2, 1})
    for (int i = 0; i < 200; i += step) VesselClear(whole.get(), ("m" + std::to_string(i)).c_str());
  EXPECT_EQ("{}", text_of(whole));
}

TEST_F(NodePoolTest, names_that_are_set_later_fit_any_node) {
  const OwnedTalk whole = document(members(50));
  const std::string longer(300, 'x');
  for (int i = 0; i < 50; ++i) {
    axp_t* const member = VesselFind(whole.get(), ("m" + std::to_string(i)).c_str());
    ASSERT_EQ(1, AxpSet(member, longer.c_str()));
    ASSERT_EQ(1, AxpSet(member, ("n" + std::to_string(i)).c_str()));
  }
  std::string expected = members(50);
  std::replace(expected.begin(), expected.end(), 'm', 'n');
  EXPECT_EQ(expected, text_of(whole));
}

TEST_F(NodePoolTest, long_texts_stand_alone) {
  const std::string text = members(20, std::string(3000, 'z'));
  const OwnedTalk whole = document(text);
  const OwnedTalk copy(TalkDup(whole.get()));
  EXPECT_EQ(text, text_of(copy));
}

TEST_F(NodePoolTest, merging_into_a_copy_leaves_the_source_alone) {
  OwnedTalk source = document(members(100));
  const OwnedTalk target = document(R"({"m5":{"a":"old","b":"kept"},"m7":"text"})");
  ASSERT_EQ(1, VesselModify(source.get(), target.get()));
  source.reset();
  talk_t* const inner = VesselGetX(target.get(), "m5");
  EXPECT_STREQ("5", VesselGetS(inner, "a"));
  EXPECT_STREQ("kept", VesselGetS(inner, "b"));
  EXPECT_STREQ("7", VesselGetS(VesselGetX(target.get(), "m7"), "a"));
}

TEST_F(NodePoolTest, every_failing_allocation_of_a_copy_leaves_nothing) {
  const OwnedTalk source = document(members(100));
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    const OwnedTalk copy(each.run([&] { return TalkDup(source.get()); }));
    EXPECT_EQ(each.fired(), copy == nullptr) << each.nth();
  }
}

TEST_F(NodePoolTest, parts_of_one_document_are_freed_in_separate_threads) {
  for (int round = 0; round < 50; ++round) {
    OwnedTalk whole = document(members(40));
    OwnedTalk parts[40];
    for (int i = 0; i < 40; ++i)
      parts[i].reset(VesselCut(whole.get(), ("m" + std::to_string(i)).c_str()));
    std::thread odd([&] {
      for (int i = 1; i < 40; i += 2) parts[i].reset();
    });
    for (int i = 0; i < 40; i += 2) parts[i].reset();
    odd.join();
    EXPECT_EQ("{}", text_of(whole));
  }
}

}  // namespace
