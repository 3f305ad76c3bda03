// Script adapters: the request goes out in environment variables, the answer comes back on the
// descriptor "pipeid".
#include "fairlead/adp/shell.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "adp/child_call.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/talk/text.h"
#include "fairlead/uii.h"
#include "log/level_words.h"

namespace {

using namespace fairlead;

constexpr char kSource[] = "shell";
constexpr int kFirstNumber = 3;  // behind the standard streams
constexpr int kLastNumber = 9;

// A variable with the text, or none at all when there is no text.
void put_variable(const char* name, const char* text) {
  if (text)
    setenv(name, text, 1);
  else
    unsetenv(name);
}

void put_number(const char* name, int number) {
  FixedText<16> text;
  text.format("%d", number);
  setenv(name, text.text(), 1);
}

// Moves the descriptor to a number of one digit, the only ones that some shells (dash) can redirect
// to. A number that is taken counts as free when its descriptor would be closed by the start of the
// script anyway.
int inheritable_descriptor(int fd) {
  for (int number = kFirstNumber; number <= kLastNumber; ++number) {
    const int flags = fcntl(number, F_GETFD);
    if (flags >= 0 && !(flags & FD_CLOEXEC)) continue;
    if (number != fd) return dup2(fd, number);
    break;
  }
  fcntl(fd, F_SETFD, 0);
  return fd;
}

// What every script is told, and its start.
struct ScriptRequest {
  const char* script;
  const char* object;  // null: the variable is not touched
  const char* interface;

  void put_request(int answer_fd) const {
    put_number("pipeid", inheritable_descriptor(answer_fd));
    if (object) setenv("adp", object, 1);
    setenv("interface", interface, 1);
  }

  [[noreturn]] void start() const {
    execl(script, script, static_cast<char*>(nullptr));
    LogWrite(kErrorWithErrno, kSource, __LINE__, "execl the %s error", script);
    _exit(127);
  }
};

struct SetRequest : ScriptRequest {
  const char* path;
  const char* value;

  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    put_variable("config", path);
    put_variable("value", value);
    start();
  }
};

struct GetRequest : ScriptRequest {
  const char* path;

  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    put_variable("config", path);
    start();
  }
};

struct ListRequest : ScriptRequest {
  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    start();
  }
};

struct CallRequest : ScriptRequest {
  param_t* parameters;

  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    const int count = parameters ? ParamCount(parameters) : -1;
    put_number("paramter_count", count);
    // Index 0 names no parameter and the last one is left out: the published contract that scripts
    // rely on.
    for (int index = 0; index < count; ++index) {
      FixedText<32> name;
      name.format("paramter%d", index);
      const char* text = index > 0 ? ParamGetS(parameters, index) : nullptr;
      setenv(name.text(), text ? text : "", 1);
    }
    start();
  }
};

}  // namespace

extern "C" int ShellAbSet(adp_t* adp, slash_t* path, talk_t* value) {
  if (!adp) return fail<int>(EINVAL);
  const OwnedText text(value ? TalkString(value) : nullptr);
  const SetRequest request{
      {adp->file, adp->name, "="}, path ? SlashString(path) : nullptr, text.get()};
  talk_t* answer = call_child({kSource, "ShellAbSet", adp->name, adp->name}, request);
  drop_answer(answer);
  return answer == TALK_DONE ? 1 : 0;
}

extern "C" talk_t* ShellAbGet(adp_t* adp, slash_t* path) {
  if (!adp) return fail<talk_t*>(EINVAL);
  const GetRequest request{{adp->file, adp->name, ":"}, path ? SlashString(path) : nullptr};
  return call_child({kSource, "ShellAbGet", adp->name, adp->name}, request);
}

extern "C" talk_t* ShellIfList(const char* script) {
  if (!script) return fail<talk_t*>(EINVAL);
  const ListRequest request{{script, nullptr, "."}};
  return call_child({kSource, "ShellIfList", script, script}, request);
}

extern "C" talk_t* ShellIfCall(adp_t* adp, const char* name, param_t* parameters) {
  if (!adp || !name) return nullptr;
  char identifier[kPathSize];
  UiiAssembly(adp->name, name, nullptr, identifier, sizeof identifier);
  FixedText<2 * kPathSize> subject;
  subject.add(adp->name).add('.').add(name);
  const CallRequest request{{adp->file, adp->name, name}, parameters};
  return call_child({kSource, "ShellIfCall", identifier, subject.text()}, request);
}
