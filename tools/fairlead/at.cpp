// Commands to a modem.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "base/bounded_text.h"
#include "fairlead/atcmd.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

struct Closer {
  void operator()(atcmd_t* modem) const { atcmd_close(modem); }
};
using Modem = std::unique_ptr<atcmd_t, Closer>;

const char* reason(int result) {
  switch (result) {
    case 1:
      return "the line was hung up";
    case 4:
      return "no answer";
    case 5:
      return "refused";
    default:
      return strerror(errno);
  }
}

// Without the CRs and empty lines that modems put around everything.
Exit show_reply(const Call& call, const char* reply) {
  fairlead::FixedText<1024> text;
  for (; *reply; ++reply) {
    if (*reply == '\r' || (*reply == '\n' && text.length() == 0)) continue;
    if (*reply == '\n' && text.text()[text.length() - 1] == '\n') continue;
    text.add(*reply);
  }
  return show_text(call, "reply", text.text());
}

Exit ask(const Call& call, atcmd_t* modem, const char* command) {
  const int result = atcmd_send(modem, command, call.options.timeout, call.options.expect, 0);
  const char* problem = reason(result);
  if (result == 0 || result == 5) show_reply(call, atcmd_lastack(modem));
  return result == 0 ? kDone : fail("%s: %s", command, problem);
}

// The library uses what has no line settings as it is, so a command would be written into a file.
Exit check_device(const char* path) {
  struct stat status;
  if (stat(path, &status) != 0) return fail_because(errno, "%s", path);
  return S_ISCHR(status.st_mode) ? kDone : fail("%s: this is no device", path);
}

}  // namespace

Exit at_command(const Call& call) {
  const char* device = call.argument(0);
  if (const Exit refused = check_device(device); refused != kDone) return refused;
  const Modem modem(atcmd_open(device, O_RDWR | O_NOCTTY | O_NONBLOCK, call.options.speed, nullptr,
                               nullptr, ATCMD_ECHO));
  if (!modem) return fail_because(errno, "%s", device);
  for (const char* command : call.arguments.subspan(1))
    if (const Exit result = ask(call, modem.get(), command); result != kDone) return result;
  return kDone;
}

}  // namespace control
