// Services.
#include "fairlead/service.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/bounded_text.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"
#include "tools/telling.h"
#include "uii/owned_uii.h"

namespace control {

namespace {

constexpr const char* kColumns[] = {"status", "pid", "adp", "func"};

// A control function that finds no daemon says ESRCH, without a record ENOENT.
Exit outcome(const Call& call, int result) {
  if (result == 0) return done(call);
  const char* name = call.argument(0);
  if (errno == ENOENT) return nothing("there is no service '%s'", name);
  if (errno == ESRCH) return nothing("'%s' was not running", name);
  return fail_because(errno, "service '%s'", name);
}

// Whether the request tool reads the two back from the identifier that it is given.
bool is_call(const char* object, const char* interface) {
  const fairlead::OwnedUii read(UiiFormat("%s.%s", object, interface));
  const char* found = read && read->kind == UII_CALL ? UiiInterface(read.get()) : nullptr;
  return found && *found && strcmp(found, interface) == 0;
}

// Where PATH is not set, the system has a path of its own.
bool request_tool_is_there() {
  const char* path = getenv("PATH");
  for (const char* at = path; at; at = strchr(at, ':')) {
    at += *at == ':' && at != path;
    fairlead::FixedText<PATH_MAX> file;
    file.add({at, strcspn(at, ":")}).add(file.length() ? "/he" : "he");
    if (access(file.text(), X_OK) == 0) return true;
  }
  return !path;
}

}  // namespace

Exit service_list(const Call& call) {
  const fairlead::OwnedTalk services(ServiceList());
  if (!services) return fail("out of memory");
  if (!services->child && !call.options.json) return nothing("there are no services");
  return show_table(call, services.get(), "service", kColumns);
}

Exit service_info(const Call& call) {
  const fairlead::OwnedTalk info(ServiceInfo("%s", call.argument(0)));
  if (!info && tools::telling(errno)) return fail_because(errno, "service '%s'", call.argument(0));
  if (!info) return nothing("there is no service '%s', or it is off", call.argument(0));
  return show(call, info.get());
}

Exit service_pid(const Call& call) {
  const pid_t pid = ServicePid("%s", call.argument(0));
  if (pid < 0) return nothing("'%s' is not running", call.argument(0));
  return show_number(call, "pid", pid);
}

Exit service_start(const Call& call) {
  const char* parameters = call.argument(3);
  if (!is_call(call.argument(1), call.argument(2)))
    return refuse("'%s.%s' does not name an object and its interface", call.argument(1),
                  call.argument(2));
  if (const pid_t pid = ServicePid("%s", call.argument(0)); pid >= 0)
    return fail("'%s' runs already, as process %d", call.argument(0), static_cast<int>(pid));
  if (!request_tool_is_there()) return fail("there is no program 'he' in PATH to run it");
  errno = 0;
  const int result =
      parameters
          ? ServiceStart(call.argument(0), call.argument(1), call.argument(2), "%s", parameters)
          : ServiceStart(call.argument(0), call.argument(1), call.argument(2), nullptr);
  if (result != 0) return fail_because(errno, "service '%s' cannot be started", call.argument(0));
  if (ServicePid("%s", call.argument(0)) >= 0) return done(call);
  return fail("'%s' ended at once; the log may tell why", call.argument(0));
}

Exit service_stop(const Call& call) { return outcome(call, ServiceStop("%s", call.argument(0))); }

Exit service_reset(const Call& call) {
  const int result = ServiceReset("%s", call.argument(0));
  return result != 0 && errno == ESRCH ? done(call) : outcome(call, result);
}

Exit service_off(const Call& call) { return outcome(call, ServiceOff("%s", call.argument(0))); }

Exit service_check(const Call& call) {
  errno = 0;
  if (DaemonCheck() != 0) return fail_because(errno, "the services cannot be checked");
  return done(call);
}

}  // namespace control
