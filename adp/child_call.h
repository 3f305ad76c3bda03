// A request answered by a child process: prepare, fork, wait and put back, once for module and
// script adapters alike.
#pragma once

#include "fairlead/talk/node.h"

namespace fairlead {

struct ChildCall {
  const char* source;    // the name the messages are logged under
  const char* function;  // the public function, as the messages name it
  // Who the child is: its syslog identity, and its name where the channel cannot be made or tells
  // of the child's death.
  const char* name;
  const char* subject;    // what the function's other messages name in parentheses
  bool named_end = true;  // the message about a death seen later names the function as well
};

using ChildBody = void (*)(const void* request, int answer_fd);

// Runs the body in a child and returns the answer as pipe_fdtalk decodes it; null with errno ECHILD
// when a signal ended the child without one. The body never returns to the caller's code: the child
// ends after it with status 0.
talk_t* call_child(const ChildCall& call, ChildBody body, const void* request);

// Frees an answer that is not handed on; codes are no documents.
inline void drop_answer(talk_t* answer) {
  if (answer != TALK_DONE && answer != TALK_FAILED) TalkFree(answer);
}

// The same with a request that has a function serve(answer_fd).
template <class Request>
talk_t* call_child(const ChildCall& call, const Request& request) {
  return call_child(
      call,
      [](const void* untyped, int answer_fd) {
        static_cast<const Request*>(untyped)->serve(answer_fd);
      },
      &request);
}

}  // namespace fairlead
