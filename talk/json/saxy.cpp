// The event parser: tells what it reads and builds nothing.
#include <cstdlib>

#include "talk/json/assertion.h"
#include "talk/json/grammar.h"
#include "talk/json/growing_text.h"
#include "talk/json/lexer.h"

namespace {

using fairlead::kGoOn;
namespace grammar = fairlead::grammar;

// The open containers, a bit for each.
class Nesting {
 public:
  Nesting() = default;
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { free(bits_.text); }

  bool push(bool object) {
    if (depth_ / 8 == bits_.capacity && !fairlead::make_room(&bits_, bits_.capacity + 1))
      return false;
    const int bit = 1 << (depth_ % 8);
    char& byte = bits_.text[depth_++ / 8];
    byte = static_cast<char>(object ? byte | bit : byte & ~bit);
    return true;
  }

  void pop() { --depth_; }
  bool empty() const { return depth_ == 0; }
  bool in_object() const { return bits_.text[(depth_ - 1) / 8] >> ((depth_ - 1) % 8) & 1; }

 private:
  json_buffer_t bits_{};
  size_t depth_ = 0;
};

// Hands the grammar's events to the caller's functions; one that returns 0 ends the parse.
class Events {
 public:
  Events(const json_saxy_t* calls, void* context) : calls_(calls), context_(context) {}

  json_error open(uint32_t kind) {
    const bool object = kind == JSON_OBJECT;
    if (!nesting_.push(object)) return JSON_NO_MEMORY;
    return tell(object ? calls_->object_begin : calls_->array_begin);
  }

  json_error close(grammar::State& around) {
    const bool object = nesting_.in_object();
    nesting_.pop();
    around = nesting_.empty()       ? grammar::kComplete
             : nesting_.in_object() ? grammar::kMemberEnd
                                    : grammar::kElementEnd;
    return tell(object ? calls_->object_end : calls_->array_end);
  }

  json_error label(std::string_view text) {
    if (!calls_->label || calls_->label(context_, text.data(), text.size())) return kGoOn;
    return JSON_DONE;
  }

  json_error value(uint32_t kind, std::string_view text) {
    if (!calls_->value || calls_->value(context_, kind, text.data(), text.size())) return kGoOn;
    return JSON_DONE;
  }

 private:
  json_error tell(int (*call)(void*)) const { return !call || call(context_) ? kGoOn : JSON_DONE; }

  const json_saxy_t* calls_;
  void* context_;
  Nesting nesting_;
};

}  // namespace

extern "C" json_error json_saxy_parse(const char* text, const json_saxy_t* events, void* context) {
  NODE_ASSERT_GIVEN(text);
  NODE_ASSERT_GIVEN(events);
  json_jpi_t info;
  json_jpi_init(&info);
  fairlead::JsonLexer lexer(&info, text);
  Events told(events, context);
  const json_error result = fairlead::read_document(&info, lexer, told);
  if (result == JSON_NEED_MORE) return grammar::end_of_document(&info, text[0] == '\0');
  return result == JSON_DONE_AT_END ? JSON_DONE : result;
}
