// Documents from and to stdio streams.
#include <cstdio>

#include "talk/json/assertion.h"
#include "talk/json/parser.h"
#include "talk/json/tree_writer.h"

namespace {

// Reads this much of a line at a time.
constexpr int kPieceSize = 1024;

// Writes straight to the stream; once that has failed it writes nothing more.
class StreamOutput {
 public:
  explicit StreamOutput(FILE* file) : file_(file) {}

  void put(char c) {
    if (!failed_) failed_ = fputc(c, file_) == EOF;
  }

  void add(const char* text) {
    if (!failed_) failed_ = fputs(text, file_) == EOF;
  }

  void quoted(const json_t& node, bool label) {
    if (!failed_) failed_ = fprintf(file_, label ? "\"%s\":" : "\"%s\"", node.text) < 0;
  }

  bool failed() const { return failed_; }

 private:
  FILE* file_;
  bool failed_ = false;
};

}  // namespace

extern "C" json_error json_stream_output(FILE* file, json_t* root) {
  NODE_ASSERT_GIVEN(file);
  NODE_ASSERT_GIVEN(root);
  StreamOutput output(file);
  const json_error result = fairlead::write_tree(root, output);
  return output.failed() ? JSON_INTERNAL : result;
}

extern "C" json_error json_stream_parse(FILE* file, json_t** document) {
  NODE_ASSERT_GIVEN(file);
  NODE_ASSERT_GIVEN(document);
  NODE_ASSERT_NULL(*document);
  json_jpi_t info;
  json_jpi_init(&info);
  json_error result = JSON_NEED_MORE;
  bool empty = true;
  char piece[kPieceSize];
  while (fgets(piece, sizeof(piece), file)) {
    empty = false;
    result = json_parse_fragment(&info, piece);
    if (result != JSON_NEED_MORE && result != JSON_DONE_AT_END) return result;
  }
  if (result == JSON_NEED_MORE) {
    const json_error end = fairlead::end_unfinished(&info, empty);
    return end == JSON_NEED_MORE ? JSON_INTERNAL : end;
  }
  *document = info.cursor;
  return JSON_DONE;
}
