// An answer as text.
#include "tools/he/answer.h"

#include <cstdio>

#include "base/owned.h"
#include "fairlead/talk/node.h"

namespace he {
namespace {

// Lays out compact JSON. The library's json_format_string is not used: it takes a string that ends
// with an escaped quote for unfinished, and would change what follows.
class Indenter {
 public:
  void print(const char* text) {
    for (; *text; ++text) text = in_string_ ? inside(text) : outside(text);
  }

 private:
  // Both give the last character they printed.
  const char* inside(const char* at) {
    putchar(*at);
    if (*at == '"') in_string_ = false;
    if (*at == '\\' && at[1]) putchar(*++at);
    return at;
  }

  const char* outside(const char* at) {
    if (*at == '{' && at[1] == '}') {
      fputs("{}", stdout);
      return at + 1;
    }
    if (*at == '}') new_line(--depth_);
    putchar(*at);
    if (*at == '{') new_line(++depth_);
    if (*at == '"') in_string_ = true;
    if (*at == ':') putchar(' ');
    if (*at == ',') new_line(depth_);
    return at;
  }

  static void new_line(int depth) { printf("\n%*s", 2 * depth, ""); }

  int depth_ = 0;
  bool in_string_ = false;
};

}  // namespace

const char* print_answer(talk_t* answer, bool indented) {
  if (RenderCheck(answer)) {
    puts(RenderString(answer));
    return nullptr;
  }
  char* written = nullptr;
  if (json_tree_to_string(answer, &written) != JSON_DONE) return "a member has no value";
  fairlead::OwnedText text(written);
  if (indented)
    Indenter().print(text.get());
  else
    fputs(text.get(), stdout);
  putchar('\n');
  return nullptr;
}

}  // namespace he
