// The default callbacks: recognise the end of a reply, empty the receive buffer.
#include <algorithm>
#include <cstring>

#include "atcmd/defaults.h"
#include "atcmd/results.h"
#include "base/bounded_text.h"

namespace fairlead::atcmd {
namespace {

constexpr char kDial[] = "ATD";
constexpr char kAccepted[] = "OK";
constexpr char kRefused[] = "ERROR";

bool given(const char* text) { return text && *text; }

bool blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Where a piece of text was found, and whether its line has ended.
struct Match {
  char* at = nullptr;
  char* line_feed = nullptr;
};

// What was received and still counts. Goes by length: a stray NUL out of the line hides nothing.
class Reply {
 public:
  explicit Reply(atcmd_t& atcmd)
      : atcmd_(atcmd),
        start_(atcmd.receive_buffer),
        end_(start_ + std::min(atcmd.received_length, kRoom)) {
    skip_blanks();
  }

  bool empty() const { return start_ == end_; }

  Match find(const char* piece) const {
    Match match;
    match.at = search(piece);
    if (match.at)
      match.line_feed =
          static_cast<char*>(memchr(match.at, '\n', static_cast<size_t>(end_ - match.at)));
    return match;
  }

  // False when the echo is not there yet as a whole.
  bool skip_echo(const char* command) {
    char* const echo = search(command);
    if (!echo) return false;
    start_ = echo + strlen(command);
    skip_blanks();
    return true;
  }

  // Up to a line feed, this is the last acknowledgement; what follows moves to the front.
  int complete(const Match& match, Result result) {
    *match.line_feed = '\0';
    BoundedText last(atcmd_.last_acknowledgement, sizeof atcmd_.last_acknowledgement);
    for (const char* at = start_; at < match.line_feed; at += strlen(at) + 1) last.add(at);
    keep_only(match.line_feed + 1);
    return result;
  }

 private:
  void skip_blanks() {
    while (start_ < end_ && blank(*start_)) ++start_;
  }

  char* search(const char* piece) const {
    return static_cast<char*>(
        memmem(start_, static_cast<size_t>(end_ - start_), piece, strlen(piece)));
  }

  void keep_only(const char* rest) {
    if (rest == end_) return;
    atcmd_.received_length = static_cast<int>(end_ - rest);
    memmove(atcmd_.receive_buffer, rest, static_cast<size_t>(end_ - rest));
    atcmd_.receive_buffer[atcmd_.received_length] = '\0';
  }

  atcmd_t& atcmd_;
  char* start_;
  char* end_;
};

// A dialled call is taken for set up unless the same piece of text says otherwise.
Result answer_so_far(atcmd_t& atcmd, const char* command) {
  if (!strstr(command, kDial)) return kIncomplete;
  BoundedText(atcmd.last_acknowledgement, sizeof atcmd.last_acknowledgement).add(kAccepted);
  return kPositive;
}

int parse_answer(atcmd_t& atcmd, const char* command, const char* expect, uint32_t flags) {
  Reply reply(atcmd);
  if (flags & ATCMD_ECHO && !reply.skip_echo(command)) return kIncomplete;

  const Result so_far = answer_so_far(atcmd, command);
  if (reply.empty()) return so_far;

  const char* const wanted = expect ? expect : kAccepted;
  const Match positive = *wanted ? reply.find(wanted) : Match{};
  if (positive.line_feed) return reply.complete(positive, kPositive);
  if (positive.at) return so_far;

  const Match negative = reply.find(kRefused);
  return negative.line_feed ? reply.complete(negative, kNegative) : so_far;
}

int parse_unasked(atcmd_t& atcmd, const char* expect) {
  Reply reply(atcmd);
  if (given(expect)) {
    const Match awaited = reply.find(expect);
    return awaited.line_feed ? reply.complete(awaited, kPositive) : kIncomplete;
  }
  const Match negative = reply.find(kRefused);
  return negative.line_feed ? reply.complete(negative, kNegative) : kPositive;
}

}  // namespace

// While a reply is incomplete the buffer stays as it is, the echo included: whatever a piece of the
// reply was cut through, the next look finds it whole.
int default_parser(atcmd_t* atcmd, const char* command, const char* expect, uint32_t flags) {
  if (!atcmd) return kBadHandle;
  if (atcmd->received_length < 1) return kNegative;
  return given(command) ? parse_answer(*atcmd, command, expect, flags)
                        : parse_unasked(*atcmd, expect);
}

int default_notify(atcmd_t* atcmd, const char* command) {
  if (command) return 0;
  atcmd->received_length = 0;
  memset(atcmd->receive_buffer, 0, sizeof atcmd->receive_buffer);
  return 0;
}

}  // namespace fairlead::atcmd
