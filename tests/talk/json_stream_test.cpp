// Documents from and to stdio streams.
#include <cstdio>
#include <string>

#include "json_support.h"
#include "support/capture.h"

namespace {

using fairlead_test::capture;
using fairlead_test::parsed;
using fairlead_test::text_of;
using fairlead_test::Tree;

class JsonStreamTest : public fairlead_test::DeviceTest {
 protected:
  static constexpr const char* kPath = "/tmp/document";

  struct Closer {
    void operator()(FILE* file) const { fclose(file); }
  };
  using File = std::unique_ptr<FILE, Closer>;

  static File holding(const std::string& content) {
    fairlead_test::put_file(kPath, content);
    return File(fopen(kPath, "re"));
  }

  static json_error parse(const std::string& content, Tree* tree = nullptr) {
    json_t* root = nullptr;
    const json_error result = json_stream_parse(holding(content).get(), &root);
    Tree owner(root);
    EXPECT_EQ(result == JSON_DONE, root != nullptr);
    if (tree) *tree = std::move(owner);
    return result;
  }

  static std::string written(json_t* root, json_error expected = JSON_DONE) {
    File file(fopen(kPath, "we"));
    EXPECT_EQ(expected, json_stream_output(file.get(), root));
    file.reset();
    return fairlead_test::file_content(kPath);
  }
};

TEST_F(JsonStreamTest, stream_parse_reads_line_by_line) {
  Tree tree;
  EXPECT_EQ(JSON_DONE, parse("\n{\n  \"a\": 1,\n  \"b\": [\n    true,\n    2\n  ]\n}\n\n", &tree));
  EXPECT_EQ("{\"a\":1,\"b\":[true,2]}", text_of(tree));
}

TEST_F(JsonStreamTest, stream_parse_reads_lines_longer_than_its_buffer) {
  std::string text = "{\"list\":[0";
  for (int i = 1; i < 3000; ++i) text += "," + std::to_string(i);
  text += "],\"long\":\"" + std::string(5000, 'x') + "\"}";
  Tree tree;
  EXPECT_EQ(JSON_DONE, parse(text, &tree));
  EXPECT_EQ(text, text_of(tree));
}

TEST_F(JsonStreamTest, stream_parse_of_a_stream_that_ends_early_is_internal) {
  EXPECT_EQ(JSON_INTERNAL, parse("{\"a\":\n[1,\n"));
  EXPECT_EQ(JSON_INTERNAL, parse("{\"a"));
  EXPECT_EQ(JSON_INTERNAL, parse(""));
}

TEST_F(JsonStreamTest, stream_parse_tells_what_is_wrong) {
  EXPECT_EQ(JSON_SYNTAX, parse("{\"a\":1,\n}\n"));
  EXPECT_EQ(JSON_SYNTAX, parse("[1]\n"));
  EXPECT_EQ(JSON_SYNTAX, parse(" \n\n"));
  EXPECT_EQ(JSON_SYNTAX, parse("{}\n{}\n"));
  EXPECT_EQ(JSON_BAD_AFTER_COMMA, parse("{\"a\":1,\nx}\n"));
}

TEST_F(JsonStreamTest, stream_parse_reports_the_line) {
  const std::string err = capture([] { parse("{\n\"a\":\n1\n2}\n"); }).err;
  EXPECT_EQ("JSON: state 4: defaulted at line 4\n", err);
}

TEST_F(JsonStreamTest, stream_parse_reads_no_further_than_a_nul_byte_in_a_line) {
  Tree tree;
  EXPECT_EQ(JSON_DONE, parse(std::string("{\"a\":\0xx\n1}\n", 12), &tree));
  EXPECT_EQ("{\"a\":1}", text_of(tree));
}

TEST_F(JsonStreamTest, stream_parse_aborts_on_misuse) {
  File file = holding("{}");
  Tree tree(json_new_object());
  json_t* taken = tree.get();
  json_t* none = nullptr;
  EXPECT_ASSERTION(json_stream_parse(nullptr, &none), "file != ((void *)0)");
  EXPECT_ASSERTION(json_stream_parse(file.get(), nullptr), "document != ((void *)0)");
  EXPECT_ASSERTION(json_stream_parse(file.get(), &taken), "*document == ((void *)0)");
}

TEST_F(JsonStreamTest, stream_output_writes_the_compact_text) {
  const char* text = R"({"a":[1,"two",{"three":3.0}],"b":true,"c":false,"d":null,"e\u00e9":{}})";
  EXPECT_EQ(text, written(parsed(text).get()));
}

TEST_F(JsonStreamTest, stream_output_refuses_what_the_serializer_refuses) {
  Tree object(json_new_object());
  json_insert_child(object.get(), json_new_string("label"));
  EXPECT_EQ("{\"label\":", written(object.get(), JSON_BAD_STRUCTURE));
  Tree unknown(json_new_value(7));
  EXPECT_EQ("", written(unknown.get(), JSON_INTERNAL));
}

TEST_F(JsonStreamTest, stream_output_tells_when_the_stream_fails) {
  File full(fopen("/dev/full", "we"));
  setvbuf(full.get(), nullptr, _IONBF, 0);
  Tree tree = parsed(R"({"a":[1,"two",true]})");
  EXPECT_EQ(JSON_INTERNAL, json_stream_output(full.get(), tree.get()));
}

TEST_F(JsonStreamTest, stream_output_aborts_on_null) {
  Tree tree(json_new_object());
  EXPECT_ASSERTION(json_stream_output(nullptr, tree.get()), "file != ((void *)0)");
  EXPECT_ASSERTION(json_stream_output(stdout, nullptr), "root != ((void *)0)");
}

}  // namespace
