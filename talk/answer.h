// A message that arrives on a descriptor: its growing buffer, its end and what it means.
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "base/owned.h"
#include "fairlead/talk/json.h"

namespace fairlead {

class AnswerBuffer {
 public:
  AnswerBuffer() {}  // not `= default`: the room must not be cleared

  // One read. What read returns; -1 also when memory runs out.
  ssize_t receive(int fd);

  // The last byte so far is a NUL: the sender has ended the message.
  bool complete() const { return length_ > 0 && text_[length_ - 1] == '\0'; }

  // TALK_DONE, TALK_FAILED, a new document, or null with errno EINVAL for an empty or broken
  // message.
  talk_t* decode();

 private:
  static constexpr size_t kFirstRoom = 4096;

  bool make_room();

  char first_[kFirstRoom];  // most messages fit, and take no block of their own
  OwnedText block_;
  char* text_ = first_;
  size_t length_ = 0;
  size_t capacity_ = kFirstRoom;
};

}  // namespace fairlead
