// What must hold at any size: constant stack, cost in proportion, and memory that runs out.
#include <chrono>
#include <cstdio>
#include <string>

#include "json_support.h"
#include "support/capture.h"
#include "support/faults.h"
#include "support/small_stack.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::parsed;
using fairlead_test::run_on_small_stack;
using fairlead_test::take;
using fairlead_test::text_of;
using fairlead_test::times;
using fairlead_test::Tree;

constexpr size_t kLevels = 1000000;
constexpr size_t kSmallStack = 256;  // KiB

class JsonLimitsTest : public fairlead_test::DeviceTest {
 protected:
  static std::string deep_objects() {
    return times(kLevels, "{\"a\":") + "{}" + std::string(kLevels, '}');
  }
  static std::string deep_arrays() {
    return "{\"a\":" + std::string(kLevels, '[') + std::string(kLevels, ']') + "}";
  }

  static void write_to_null(json_t* root) {
    FILE* file = fopen("/dev/null", "we");
    EXPECT_EQ(JSON_DONE, json_stream_output(file, root));
    fclose(file);
  }

  // Seconds of processor time, the best of three.
  template <class Action>
  static double cost(Action action) {
    double best = 1e9;
    for (int round = 0; round < 3; ++round) {
      const clock_t start = clock();
      action();
      const double used = static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
      if (used < best) best = used;
    }
    return best;
  }

  // Ten times the work may cost thirty times as much, on a busy machine; a hundred would be
  // quadratic.
  template <class Action>
  static void expect_proportional(size_t size, Action action) {
    const double small = cost([&] { action(size); });
    const double large = cost([&] { action(10 * size); });
    EXPECT_LT(large, 30 * small + 0.01) << small << " s, " << large << " s";
  }
};

TEST_F(JsonLimitsTest, a_million_levels_pass_on_a_small_stack) {
  for (const std::string& text : {deep_objects(), deep_arrays()}) {
    run_on_small_stack(kSmallStack, [&] {
      Tree tree = parsed(text);
      EXPECT_TRUE(text == text_of(tree));
      write_to_null(tree.get());
    });
  }
}

TEST_F(JsonLimitsTest, a_million_levels_can_be_dumped_on_a_small_stack) {
  Tree tree = parsed(deep_arrays());
  size_t length = 0;
  run_on_small_stack(kSmallStack, [&] {
    length = fairlead_test::capture([&] { json_render_tree(tree.get()); }).out.size();
  });
  EXPECT_GT(length, kLevels * sizeof("ARRAY: "));
}

TEST_F(JsonLimitsTest, a_million_levels_cut_short_are_freed_on_a_small_stack) {
  for (const std::string& text : {deep_objects(), deep_arrays()}) {
    run_on_small_stack(kSmallStack, [&] {
      json_t* root = nullptr;
      EXPECT_EQ(JSON_NEED_MORE,
                json_parse_document(&root, text.substr(0, text.size() - 1).c_str()));
      EXPECT_EQ(JSON_SYNTAX,
                json_parse_document(&root, (text.substr(0, text.size() - 1) + "]]").c_str()));
    });
  }
}

TEST_F(JsonLimitsTest, a_million_levels_are_told_as_events_on_a_small_stack) {
  const json_saxy_t none{};
  run_on_small_stack(kSmallStack, [&] {
    EXPECT_EQ(JSON_DONE, json_saxy_parse(deep_objects().c_str(), &none, nullptr));
    EXPECT_EQ(JSON_DONE, json_saxy_parse(deep_arrays().c_str(), &none, nullptr));
  });
}

TEST_F(JsonLimitsTest, members_cost_in_proportion) {
  expect_proportional(3000, [](size_t count) {
    std::string text = "{";
    for (size_t i = 0; i < count; ++i)
      text += (i ? ",\"m" : "\"m") + std::to_string(i) + "\":\"v\"";
    text += "}";
    EXPECT_EQ(text, text_of(parsed(text)));
  });
}

TEST_F(JsonLimitsTest, a_long_text_costs_in_proportion) {
  expect_proportional(300000, [](size_t length) {
    const std::string text = "{\"a\":\"" + std::string(length, 'x') + "\"}";
    EXPECT_EQ(text.size(), text_of(parsed(text)).size());
  });
}

TEST_F(JsonLimitsTest, a_token_in_many_pieces_costs_in_proportion) {
  expect_proportional(20000, [](size_t pieces) {
    json_jpi_t info;
    json_jpi_init(&info);
    json_parse_fragment(&info, "{\"");
    for (size_t i = 0; i < pieces; ++i) json_parse_fragment(&info, "xy");
    EXPECT_EQ(JSON_DONE_AT_END, json_parse_fragment(&info, "\":1}"));
    Tree tree(info.cursor);
  });
}

TEST_F(JsonLimitsTest, a_document_in_many_pieces_costs_in_proportion) {
  expect_proportional(10000, [](size_t pieces) {
    json_jpi_t info;
    json_jpi_init(&info);
    json_parse_fragment(&info, "{\"a\":[0");
    for (size_t i = 0; i < pieces; ++i) json_parse_fragment(&info, ",1");
    EXPECT_EQ(JSON_DONE_AT_END, json_parse_fragment(&info, "]}"));
    Tree tree(info.cursor);
  });
}

TEST_F(JsonLimitsTest, parse_document_without_memory_frees_what_it_read) {
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    json_t* root = nullptr;
    const json_error result =
        each.run([&] { return json_parse_document(&root, R"({"a":[1,"x",{"b":null}],"c":{}})"); });
    Tree tree(root);
    EXPECT_EQ(each.fired() ? JSON_NO_MEMORY : JSON_DONE, result) << each.nth();
    EXPECT_EQ(each.fired(), root == nullptr);
  }
}

TEST_F(JsonLimitsTest, parse_fragment_without_memory_frees_what_it_read) {
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    json_jpi_t info;
    json_jpi_init(&info);
    const json_error result = each.run([&] {
      json_error last = JSON_NEED_MORE;
      for (const char* piece : {"{\"lab", "el\":[tr", "ue,12", "34,\"", "x\"", "]}"})
        if (last == JSON_NEED_MORE) last = json_parse_fragment(&info, piece);
      return last;
    });
    Tree tree(info.cursor);
    EXPECT_EQ(each.fired() ? JSON_NO_MEMORY : JSON_DONE_AT_END, result) << each.nth();
  }
}

TEST_F(JsonLimitsTest, tree_to_string_without_memory_tells) {
  Tree tree =
      parsed("{\"a\":\"" + std::string(5000, 'x') + "\",\"b\":[" + times(5000, "{},") + "]}");
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    char* text = nullptr;
    const json_error result = each.run([&] { return json_tree_to_string(tree.get(), &text); });
    // When only the trimming fails, the text is whole.
    EXPECT_EQ(text ? JSON_DONE : JSON_NO_MEMORY, result) << each.nth();
    if (text) {
      EXPECT_EQ(text_of(tree), text);
    }
    free(text);
  }
}

TEST_F(JsonLimitsTest, insert_pair_without_memory_changes_nothing) {
  Tree object(json_new_object()), value(json_new_true());
  Fault fault(Call::kMalloc, {.error = ENOMEM});
  EXPECT_EQ(JSON_NO_MEMORY, json_insert_pair_into_object(object.get(), "a", value.get()));
  fault.disarm();
  EXPECT_EQ(nullptr, object->child);
  EXPECT_EQ(nullptr, value->parent);
}

TEST_F(JsonLimitsTest, constructors_and_texts_without_memory_give_null) {
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  json_t* const nodes[] = {json_new_value(2), json_new_string("a"), json_new_number("1"),
                           json_new_object(), json_new_array(),     json_new_true(),
                           json_new_false(),  json_new_null()};
  char* const texts[] = {json_escape("a"), json_unescape("a"), json_format_string("a")};
  fault.disarm();
  for (const json_t* node : nodes) EXPECT_EQ(nullptr, node);
  for (const char* text : texts) EXPECT_EQ(nullptr, text);
}

TEST_F(JsonLimitsTest, saxy_parse_without_memory_tells) {
  const json_saxy_t none{};
  Fault fault(Call::kMalloc, {.error = ENOMEM});
  EXPECT_EQ(JSON_NO_MEMORY, json_saxy_parse("{}", &none, nullptr));
}

TEST_F(JsonLimitsTest, rcs_create_without_memory_gives_null) {
  for (int nth : {1, 2}) {
    Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
    EXPECT_EQ(nullptr, rcs_create(4));
  }
}

TEST_F(JsonLimitsTest, rcs_that_cannot_grow_is_gone_but_not_its_buffer) {
  const auto grow_by_byte = [](rcs_t* rcs) { return rcs_catc(rcs, 'x'); };
  const auto grow_by_text = [](rcs_t* rcs) { return rcs_catcs(rcs, "xy", 2); };
  const auto grow_by_hand = [](rcs_t* rcs) { return rcs_resize(rcs, 10); };
  for (int (*grow)(rcs_t*) : {+grow_by_byte, +grow_by_text, +grow_by_hand}) {
    rcs_t* rcs = rcs_create(1);
    rcs_catc(rcs, 'a');
    char* buffer = rcs->text;
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    EXPECT_EQ(0, grow(rcs));
    fault.disarm();
    EXPECT_EQ("a", take(buffer));
  }
}

TEST_F(JsonLimitsTest, rcs_refuses_to_grow_past_its_length) {
  const auto grow_by_byte = [](rcs_t* rcs) { return rcs_catc(rcs, 'x'); };
  const auto grow_by_text = [](rcs_t* rcs) { return rcs_catcs(rcs, "xy", 2); };
  for (int (*grow)(rcs_t*) : {+grow_by_byte, +grow_by_text}) {
    rcs_t* rcs = rcs_create(1);
    rcs->length = rcs->capacity = UINT32_MAX - 1;  // as if four gigabytes were there
    char* buffer = rcs->text;
    EXPECT_EQ(0, grow(rcs));
    free(buffer);
  }
}

TEST_F(JsonLimitsTest, rcs_unwrap_without_memory_hands_out_the_text_untrimmed) {
  rcs_t* rcs = rcs_create(100);
  rcs_catcs(rcs, "abc", 3);
  Fault fault(Call::kMalloc, {.error = ENOMEM});
  EXPECT_EQ("abc", take(rcs_unwrap(rcs)));
}

}  // namespace
