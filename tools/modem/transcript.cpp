// Reads a transcript: one step a line, its kind told by the first character.
#include "tools/modem/transcript.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "base/stream.h"
#include "tools/modem/report.h"

namespace modem {
namespace {

constexpr size_t kLargestFile = 1 << 20;

fairlead::OwnedText content_of(const char* path) {
  const fairlead::Stream file = fairlead::open_stream(path);
  if (!file) {
    complain("%s: %s", path, strerror(errno));
    return {};
  }
  fairlead::OwnedText content(static_cast<char*>(malloc(kLargestFile + 1)));
  const size_t length = content ? fread(content.get(), 1, kLargestFile, file.get()) : 0;
  if (content) content.get()[length] = '\0';
  return content;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Gives the character behind a backslash and moves past it; -1 when there is none such.
int escaped(const char*& at) {
  const char kind = *at++;
  if (kind == 'r') return '\r';
  if (kind == 'n') return '\n';
  if (kind == 't') return '\t';
  if (kind == '\\') return '\\';
  if (kind != 'x') return -1;
  const int high = hex_digit(at[0]);
  const int low = high < 0 ? -1 : hex_digit(at[1]);
  if (low < 0) return -1;
  at += 2;
  return high * 16 + low;
}

// In place: the text only gets shorter.
bool unescape(char* text, size_t& length) {
  char* to = text;
  for (const char* from = text; *from;) {
    if (*from != '\\') {
      *to++ = *from++;
      continue;
    }
    const int c = escaped(++from);
    if (c < 0) return false;
    *to++ = static_cast<char>(c);
  }
  length = static_cast<size_t>(to - text);
  return true;
}

bool read_number(const char* text, int& number) {
  const char* const end = text + strlen(text);
  const auto [stop, error] = std::from_chars(text, end, number);
  return error == std::errc() && stop == end && number >= 0;
}

struct Mark {
  char sign;
  Act act;
};

constexpr Mark kMarks[] = {{'>', Act::kHear},  {'<', Act::kSay},   {'!', Act::kSay},
                           {'|', Act::kSayOn}, {'=', Act::kBytes}, {'~', Act::kWait}};

struct Word {
  const char* text;
  Act act;
  int number;
};

constexpr Word kWords[] = {
    {"echo on", Act::kEcho, 1}, {"echo off", Act::kEcho, 0}, {"hang up", Act::kHangUp, 0}};

// The text of a marked step, or its number, is what follows the mark and one blank.
bool read_marked(char* line, Step& step) {
  for (const Mark& mark : kMarks) {
    if (line[0] != mark.sign) continue;
    char* const text = line + (line[1] == ' ' ? 2 : 1);
    step.act = mark.act;
    step.text = text;
    return mark.act == Act::kWait ? read_number(text, step.number) : unescape(text, step.length);
  }
  return false;
}

bool read_word(const char* line, Step& step) {
  for (const Word& word : kWords) {
    if (strcmp(line, word.text) != 0) continue;
    step.act = word.act;
    step.number = word.number;
    return true;
  }
  return false;
}

}  // namespace

bool Transcript::read(const char* path) {
  path_ = path;
  content_ = content_of(path);
  return content_ && read_lines();
}

bool Transcript::read_lines() {
  char* rest = content_.get();
  for (int number = 1; rest && *rest; ++number) {
    char* const line = strsep(&rest, "\n");
    if (!add(line, number)) return false;
  }
  for (const Step& step : *this)
    if (step.act == Act::kHear) return true;
  complain("%s: no command is waited for in it", path_);
  return false;
}

bool Transcript::add(char* line, int number) {
  if (line[0] == '\0' || line[0] == '#') return true;
  Step step = {Act::kHear, "", 0, 0, number};
  if (read_word(line, step) || read_marked(line, step)) return add_step(step);
  complain("%s:%d: not understood", path_, number);
  return false;
}

bool Transcript::add_step(const Step& step) {
  if (count_ == room_) {
    const size_t room = room_ ? 2 * room_ : 64;
    Step* const larger = static_cast<Step*>(realloc(steps_.get(), room * sizeof(Step)));
    if (!larger) return false;
    (void)steps_.release();
    steps_.reset(larger);
    room_ = room;
  }
  steps_.get()[count_++] = step;
  return true;
}

}  // namespace modem
