// Parameter lists: a text cut at its top-level commas, read as text or as documents.
#include "support/faults.h"
#include "talk_support.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::kForever;
using fairlead_test::text_of;

class ParamTest : public fairlead_test::DeviceTest {
 protected:
  void TearDown() override {
    ParamClear(&param_);
    DeviceTest::TearDown();
  }

  // Fresh for every text.
  int analyse(const std::string& text) {
    ParamClear(&param_);
    param_ = {};
    text_ = text;
    return ParamAnalysis(&param_, text_.data());
  }

  // The parameters with a "|" behind each, "-" for an empty one.
  std::string split(const std::string& text) {
    EXPECT_EQ(1, analyse(text)) << text;
    std::string pieces;
    for (int i = 1; i <= ParamCount(&param_); ++i) {
      const char* piece = ParamGetS(&param_, i);
      pieces += std::string(piece ? piece : "-") + "|";
    }
    return pieces;
  }

  static std::string numbers(int first, int last) {
    std::string list;
    for (int i = first; i <= last; ++i) list += (i > first ? "," : "") + std::to_string(i);
    return list;
  }

  param_t param_{};
  std::string text_;
};

TEST_F(ParamTest, analysis_cuts_at_commas) {
  EXPECT_EQ("1|2|3|", split("1,2,3"));
  EXPECT_EQ("a|", split("a"));
}

TEST_F(ParamTest, analysis_drops_white_space_around_parameters) {
  EXPECT_EQ("a|b|c|", split("  a, b ,c \t\r\n"));
  EXPECT_EQ("a|\tb|", split("a,  \tb")) << "only spaces are dropped after a comma";
}

TEST_F(ParamTest, analysis_overwrites_the_white_space_at_the_end) {
  EXPECT_EQ("a|b|", split("a,b \t\r\n"));
  EXPECT_EQ(std::string("a\0b\0\0\0\0", 7), text_);
}

TEST_F(ParamTest, a_space_ends_its_parameter_and_the_rest_is_lost) {
  EXPECT_EQ("x|z|", split("x y,z"));
  EXPECT_EQ("x|z|", split("x  y w , z"));
  EXPECT_EQ("[1, 2]|z|", split("[1, 2] lost,z"));
}

TEST_F(ParamTest, commas_and_spaces_inside_of_documents_are_kept) {
  EXPECT_EQ(R"({"a":"1","b":"2"}|[1,2]|)", split(R"({"a":"1","b":"2"},[1,2])"));
  EXPECT_EQ(R"("a,b"|[1,2]|)", split(R"("a,b",[1,2])"));
  EXPECT_EQ(R"("a b"|{"x": [1, {"y": 2}]}|c|)", split(R"("a b", {"x": [1, {"y": 2}]}, c)"));
}

TEST_F(ParamTest, brackets_inside_of_quotes_do_not_count) {
  EXPECT_EQ(R"("[{"|b|)", split(R"("[{",b)"));
}

TEST_F(ParamTest, a_quote_has_no_escape) { EXPECT_EQ(R"("a\"|b"|)", split(R"("a\",b")")); }

TEST_F(ParamTest, an_open_bracket_or_quote_keeps_the_rest_together) {
  EXPECT_EQ("[a,b|", split("[a,b"));
  EXPECT_EQ("a],b|", split("a],b"));
  EXPECT_EQ("\"a,b|", split("\"a,b"));
  EXPECT_EQ("[}],b|", split("[}],b")) << "braces and brackets are counted apart";
}

TEST_F(ParamTest, an_empty_parameter_has_no_text) {
  EXPECT_EQ("a|-|b|", split("a,,b"));
  EXPECT_EQ("a|-|b|", split("a, ,b"));
  EXPECT_EQ("a|-|", split("a,"));
  EXPECT_EQ("-|-|", split(","));
  EXPECT_EQ("-|a|", split(" ,a"));
}

TEST_F(ParamTest, the_twentieth_parameter_is_the_whole_rest) {
  EXPECT_EQ(1, analyse(numbers(1, 25)));
  EXPECT_EQ(PARAM_MAX, ParamCount(&param_));
  EXPECT_STREQ("19", ParamGetS(&param_, 19));
  EXPECT_STREQ("20,21,22,23,24,25", ParamGetS(&param_, 20));
}

TEST_F(ParamTest, analysis_refuses_nothing_but_white_space) {
  for (const char* text : {"", " ", "\n", " \t\r\n "}) {
    for (int stale : {0, fairlead_test::kStaleErrno}) {
      errno = stale;
      EXPECT_EQ(0, analyse(text)) << text;
      EXPECT_EQ(EINVAL, errno);
    }
  }
}

TEST_F(ParamTest, analysis_refuses_no_record_and_no_text) {
  char text[] = "a";
  EXPECT_REFUSED(0, ParamAnalysis(nullptr, text));
  EXPECT_REFUSED(0, ParamAnalysis(&param_, nullptr));
}

TEST_F(ParamTest, analysis_looks_at_nothing_before_the_text) {
  char guarded[] = "  ";
  EXPECT_REFUSED(0, ParamAnalysis(&param_, guarded + 2));
  EXPECT_STREQ("  ", guarded);
}

TEST_F(ParamTest, count_of_no_record_is_minus_one) {
  EXPECT_EQ(0, ParamCount(&param_));
  EXPECT_REFUSED(-1, ParamCount(nullptr));
}

TEST_F(ParamTest, get_gives_the_entry_and_minus_one_is_the_last) {
  analyse("1,2,3");
  EXPECT_EQ(text_.data(), ParamGet(&param_, 1)->text) << "a parameter lies in the text";
  EXPECT_STREQ("3", ParamGet(&param_, 3)->text);
  EXPECT_EQ(ParamGet(&param_, 3), ParamGet(&param_, -1));
}

TEST_F(ParamTest, get_s_and_get_t_take_minus_one_for_the_parameter_before_the_last) {
  analyse("1,2,3");
  EXPECT_STREQ("2", ParamGetS(&param_, -1));
  EXPECT_EQ(ParamGetT(&param_, 2), ParamGetT(&param_, -1));
}

TEST_F(ParamTest, get_s_and_get_t_refuse_minus_one_with_a_single_parameter) {
  analyse("1");
  EXPECT_REFUSED(nullptr, ParamGetS(&param_, -1));
  EXPECT_REFUSED(nullptr, ParamGetT(&param_, -1));
  EXPECT_STREQ("1", ParamGet(&param_, -1)->text);
}

TEST_F(ParamTest, bad_indexes_are_refused) {
  analyse("1,2,3");
  for (int index : {0, 4, -2, INT32_MAX, INT32_MIN}) {
    EXPECT_REFUSED(nullptr, ParamGet(&param_, index));
    EXPECT_REFUSED(nullptr, ParamGetS(&param_, index));
    EXPECT_REFUSED(nullptr, ParamGetT(&param_, index));
  }
}

TEST_F(ParamTest, no_record_and_an_empty_record_are_refused) {
  for (param_t* param : {&param_, static_cast<param_t*>(nullptr)}) {
    for (int index : {1, -1}) {
      EXPECT_REFUSED(nullptr, ParamGet(param, index));
      EXPECT_REFUSED(nullptr, ParamGetS(param, index));
      EXPECT_REFUSED(nullptr, ParamGetT(param, index));
    }
  }
}

TEST_F(ParamTest, an_empty_parameter_reads_as_null_and_leaves_errno) {
  analyse("a,,b");
  EXPECT_ERRNO_KEPT(nullptr, ParamGetS(&param_, 2));
  EXPECT_ERRNO_KEPT(nullptr, ParamGetT(&param_, 2));
  EXPECT_NE(nullptr, ParamGet(&param_, 2));
}

TEST_F(ParamTest, get_t_reads_an_object) {
  analyse(R"(1,{"k":"v"})");
  talk_t* talk = ParamGetT(&param_, 2);
  EXPECT_EQ(1u, VesselCheck(talk));
  EXPECT_STREQ("v", VesselGetS(talk, "k"));
}

TEST_F(ParamTest, get_t_makes_a_string_of_anything_else) {
  analyse("hello,[1,2]");
  EXPECT_STREQ("hello", RenderString(ParamGetT(&param_, 1)));
  EXPECT_STREQ("[1,2]", RenderString(ParamGetT(&param_, 2)));
}

TEST_F(ParamTest, get_t_gives_the_same_document_again) {
  analyse(R"({"k":"v"})");
  talk_t* talk = ParamGetT(&param_, 1);
  EXPECT_EQ(talk, ParamGetT(&param_, 1));
  EXPECT_EQ(talk, ParamGet(&param_, 1)->talk);
}

TEST_F(ParamTest, get_t_of_a_bad_document_is_null) {
  analyse("{bad},1");
  EXPECT_REFUSED(nullptr, ParamGetT(&param_, 1));
}

TEST_F(ParamTest, string_puts_the_list_together) {
  for (auto [text, list] : {std::pair{" a , b", "a,b"},
                            {R"({"x":"1"}, [1,2])", R"({"x":"1"},[1,2])"},
                            {"a,,b,", "a,,b,"},
                            {",", ","},
                            {"x y,z", "x,z"}}) {
    analyse(text);
    EXPECT_STREQ(list, ParamString(&param_));
  }
}

TEST_F(ParamTest, string_is_made_once_and_kept) {
  analyse("a,b");
  const char* first = ParamString(&param_);
  ParamGet(&param_, 1)->text = nullptr;
  EXPECT_EQ(first, ParamString(&param_));
  EXPECT_STREQ("a,b", first);
}

TEST_F(ParamTest, string_holds_parameters_of_any_length) {
  const std::string long_one(100000, 'x');
  analyse(long_one + "," + long_one);
  EXPECT_EQ(long_one + "," + long_one, ParamString(&param_));
}

TEST_F(ParamTest, string_without_parameters_is_null_and_leaves_errno) {
  EXPECT_ERRNO_KEPT(nullptr, ParamString(&param_));
  EXPECT_REFUSED(nullptr, ParamString(nullptr));
}

TEST_F(ParamTest, string_without_memory_is_null_and_can_be_asked_again) {
  analyse("a,b");
  {
    Fault fault(Call::kMalloc, {.error = ENOMEM, .times = kForever});
    EXPECT_FAILS(ENOMEM, nullptr, ParamString(&param_));
  }
  EXPECT_STREQ("a,b", ParamString(&param_));
}

TEST_F(ParamTest, an_entry_without_memory_is_counted_and_reads_as_empty) {
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    ParamClear(&param_);
    param_ = {};
    text_ = "a,b,c";
    EXPECT_EQ(1, each.run([&] { return ParamAnalysis(&param_, text_.data()); }));
    EXPECT_EQ(3, ParamCount(&param_));
    if (!each.fired()) continue;
    EXPECT_ERRNO_KEPT(nullptr, ParamGet(&param_, each.nth()));
    EXPECT_ERRNO_KEPT(nullptr, ParamGetS(&param_, each.nth()));
    EXPECT_ERRNO_KEPT(nullptr, ParamGetT(&param_, each.nth()));
    const char* const lists[] = {",b,c", "a", "a,b"};
    EXPECT_STREQ(lists[each.nth() - 1], ParamString(&param_));
  }
}

TEST_F(ParamTest, clear_leaves_count_and_pointers) {
  analyse("a,b");
  const param_t before = param_;
  ParamClear(&param_);
  EXPECT_EQ(before.count, param_.count);
  EXPECT_EQ(before.entry[1], param_.entry[1]);
  param_ = {};
}

TEST_F(ParamTest, clear_of_no_record_is_refused) {
  errno = 0;
  ParamClear(&param_);
  EXPECT_EQ(0, errno);
  ParamClear(nullptr);
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
