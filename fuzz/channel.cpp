// An answer that arrives in pieces, each in a read of its own: both readers understand it as the
// header says.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include "fairlead/adp.h"
#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;
using Pieces = std::vector<std::string>;

// Sent already, and ended: no reader has to wait.
class Channel {
 public:
  explicit Channel(const Pieces& pieces) {
    int ends[2];
    REQUIRE(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0);
    for (const std::string& piece : pieces)
      REQUIRE(write(ends[1], piece.data(), piece.size()) == static_cast<ssize_t>(piece.size()));
    close(ends[1]);
    fd_ = ends[0];
  }
  ~Channel() { close(fd_); }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  int fd() const { return fd_; }

 private:
  int fd_;
};

// Together less than the readers' first buffer: a read with less room than its piece would lose the
// rest of it. And few enough for the queue: nobody reads while they are written.
constexpr size_t kMost = 4000;
constexpr size_t kMostPieces = 128;

Pieces cut(fuzzing::Input& input) {
  Pieces pieces;
  for (size_t total = 0; !input.empty() && pieces.size() < kMostPieces;) {
    const std::string piece = input.take(1 + input.byte());
    total += piece.size();
    if (piece.empty() || total > kMost) break;
    pieces.push_back(piece);
  }
  return pieces;
}

std::string expected(const Pieces& pieces) {
  std::string text;
  for (const std::string& piece : pieces) {
    text += piece;
    if (piece.back() == '\0') break;
  }
  const std::string around("\n\r \0", 4);
  text.erase(text.find_last_not_of(around) + 1);
  text.erase(0, std::min(text.find_first_not_of("\n\r "), text.size()));
  if (text[0] == '\1') return "done";
  if (text[0] == '\2') return "failed";
  return text_of(fuzzing::document(text.c_str()).get());
}

std::string told(talk_t* answer) {
  if (answer == TALK_DONE) return "done";
  if (answer == TALK_FAILED) return "failed";
  return text_of(OwnedTalk(answer).get());
}

std::string by_channel(const Pieces& pieces) {
  const Channel channel(pieces);
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  int32_t reaped = 0;
  talk_t* const answer = pipe_fdtalk(channel.fd(), &mask, &mask, "nobody", getpid(), &reaped);
  REQUIRE(reaped == 0);
  return told(answer);
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const Pieces pieces = cut(input);
  const std::string answer = expected(pieces);
  REQUIRE(told(FdTalk(Channel(pieces).fd())) == answer);
  REQUIRE(by_channel(pieces) == answer);
}
