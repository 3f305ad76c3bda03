// One message from a descriptor.
#include "fairlead/talk/text.h"
#include "talk/answer.h"

// An interrupted read ends it like any other failure: a caller's signal must be able to.
extern "C" talk_t* FdTalk(int fd) {
  fairlead::AnswerBuffer answer;
  for (;;) {
    const ssize_t received = answer.receive(fd);
    if (received < 0) return nullptr;
    if (received == 0 || answer.complete()) return answer.decode();
  }
}
