// Receiving and decoding a message.
#include "talk/answer.h"

#include <unistd.h>

#include <cstring>

#include "fairlead/talk/text.h"

namespace fairlead {
namespace {

constexpr size_t kStep = 4096;
constexpr char kDoneByte = 0x01;
constexpr char kFailedByte = 0x02;

bool is_around(char c) { return c == '\n' || c == '\r' || c == ' '; }

}  // namespace

// By steps, which become larger with the message so that a long one is not copied at every step.
bool AnswerBuffer::make_room() {
  if (length_ < capacity_ - 1) return true;
  const size_t steps = capacity_ / kStep;
  const size_t grown = capacity_ + kStep * (1 + steps / 2);
  auto* larger = static_cast<char*>(realloc(block_.get(), grown));
  if (!larger) return false;
  if (!block_) memcpy(larger, first_, length_);
  (void)block_.release();
  block_.reset(larger);
  text_ = larger;
  capacity_ = grown;
  return true;
}

ssize_t AnswerBuffer::receive(int fd) {
  if (!make_room()) return -1;
  const ssize_t received = read(fd, text_ + length_, capacity_ - length_ - 1);
  if (received > 0) length_ += static_cast<size_t>(received);
  return received;
}

talk_t* AnswerBuffer::decode() {
  char* begin = text_;
  char* end = begin + length_;
  while (end > begin && (is_around(end[-1]) || end[-1] == '\0')) --end;
  *end = '\0';
  while (is_around(*begin)) ++begin;
  if (*begin == kDoneByte) return TALK_DONE;
  if (*begin == kFailedByte) return TALK_FAILED;
  return StringTalk(begin);
}

}  // namespace fairlead
