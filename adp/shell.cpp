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
#include "talk/roles.h"

namespace {

using namespace fairlead;

constexpr char kSource[] = "shell";
constexpr int kFirstNumber = 3;  // behind the standard streams
constexpr int kLastNumber = 9;

// False: memory for the path's text ran out. Without it the script would serve the whole object.
bool take_text(slash_t* path, const char*& text) {
  text = path && path->count > 0 ? SlashString(path) : nullptr;
  return text || !path || path->count < 1;
}

// The same for a value, which would be a deletion. Numbers, arrays and literals have no text.
bool take_text(talk_t* value, OwnedText& text) {
  if (!is_vessel(value) && !is_string_node(value)) return true;
  text.reset(TalkString(value));
  return text != nullptr;
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
    if (object) put("adp", object);
    put("interface", interface);
  }

  // A variable with the text, or none at all when there is no text.
  void put(const char* name, const char* text) const {
    // An environment may hold a name twice: setenv changes the first one, a shell takes the last.
    unsetenv(name);
    if (text && setenv(name, text, 1) != 0)
      give_up();  // with a part missing, the request would be another one
  }

  void put_number(const char* name, int number) const {
    FixedText<16> text;
    text.format("%d", number);
    put(name, text.text());
  }

  [[noreturn]] void start() const {
    execl(script, script, static_cast<char*>(nullptr));
    give_up();
  }

  [[noreturn]] void give_up() const {
    LogWrite(kErrorWithErrno, kSource, __LINE__, "execl the %s error", script);
    _exit(127);
  }
};

struct SetRequest : ScriptRequest {
  const char* path;
  const char* value;

  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    put("config", path);
    put("value", value);
    start();
  }
};

struct GetRequest : ScriptRequest {
  const char* path;

  [[noreturn]] void serve(int answer_fd) const {
    put_request(answer_fd);
    put("config", path);
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
      put(name.text(), text ? text : "");
    }
    start();
  }
};

}  // namespace

extern "C" int ShellAbSet(adp_t* adp, slash_t* path, talk_t* value) {
  if (!adp) return fail<int>(EINVAL);
  const char* config = nullptr;
  OwnedText text;
  if (!take_text(path, config) || !take_text(value, text)) return 0;
  const SetRequest request{{adp->file, adp->name, "="}, config, text.get()};
  talk_t* answer = call_child({kSource, "ShellAbSet", adp->name, adp->name}, request);
  drop_answer(answer);
  return answer == TALK_DONE ? 1 : 0;
}

extern "C" talk_t* ShellAbGet(adp_t* adp, slash_t* path) {
  if (!adp) return fail<talk_t*>(EINVAL);
  const char* config = nullptr;
  if (!take_text(path, config)) return nullptr;
  const GetRequest request{{adp->file, adp->name, ":"}, config};
  return call_child({kSource, "ShellAbGet", adp->name, adp->name}, request);
}

extern "C" talk_t* ShellIfList(const char* script) {
  if (!script) return fail<talk_t*>(EINVAL);
  const ListRequest request{{script, nullptr, "."}};
  return call_child({kSource, "ShellIfList", script, script}, request);
}

extern "C" talk_t* ShellIfCall(adp_t* adp, const char* name, param_t* parameters) {
  if (!adp || !name) return fail<talk_t*>(EINVAL);
  char identifier[kPathSize];
  UiiAssembly(adp->name, name, nullptr, identifier, sizeof identifier);
  FixedText<2 * kPathSize> subject;
  subject.add(adp->name).add('.').add(name);
  const CallRequest request{{adp->file, adp->name, name}, parameters};
  return call_child({kSource, "ShellIfCall", identifier, subject.text()}, request);
}
