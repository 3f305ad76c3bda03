// Launches a service: two forks away from its caller, registered, and then the request tool.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "base/fail.h"
#include "base/formatted_text.h"
#include "base/same_file.h"
#include "fairlead/service.h"
#include "fairlead/uii.h"
#include "log/level_words.h"
#include "misc/null_streams.h"
#include "service/daemon.h"
#include "service/launch_notice.h"
#include "service/log_source.h"
#include "service/own_descriptors.h"
#include "service/record_path.h"

namespace {

using namespace fairlead;

constexpr char kProgram[] = "he";
constexpr int kCannotRun = 127;
constexpr uint32_t kOutOfMemoryInChild = kOutOfMemory & ~LOG_EXIT;  // the status is our own to give

// The standard streams and the record are all that the program gets. A descriptor of an earlier
// record of this service is closed at once: closed by the program's start, after the registration,
// it would take the lock along.
void keep_descriptors_from_program(const char* record_path) {
  struct stat record;
  const bool there_is_one = record_path && stat(record_path, &record) == 0;
  visit_descriptors([&](int fd) {
    struct stat status;
    if (fd <= STDERR_FILENO) return false;
    if (there_is_one && fstat(fd, &status) == 0 && same_file(record, status))
      close(fd);
    else
      fcntl(fd, F_SETFD, FD_CLOEXEC);
    return false;
  });
}

// What becomes the daemon.
class Daemon {
 public:
  Daemon(const char* service, const char* object, const char* interface)
      : service_(service), object_(object), interface_(interface) {
    UiiAssembly(object, interface, nullptr, call_, sizeof call_);
  }

  void leave_caller(const LaunchNotice& notice) const {
    const pid_t child = fork();
    if (child > 0) _exit(0);
    if (child < 0) {
      log(kWarningWithErrno, "daemon error for ServiceStart( %s:%s )", __LINE__);
      notice.stay();
    }
    silence_standard_streams();
    if (setsid() < 0) log(kWarningWithErrno, "setsid error for ServiceStart( %s:%s )", __LINE__);
  }

  [[noreturn, gnu::format(printf, 2, 0)]] void run(const char* format, va_list arguments) {
    OwnedText parameters;
    if (format) parameters = format_text(format, arguments);
    if (format && !parameters) give_up();
    enter_record(parameters.get());
    log(kDebug, "start the serice( %s:%s )", __LINE__);
    become_program(parameters.get());
  }

 private:
  // The formats take the service's name and its call.
  __attribute__((format(printf, 3, 0))) void log(uint32_t word, const char* format,
                                                 int line) const {
    LogWrite(word, kServiceSource, line, format, service_, call_);
  }

  [[noreturn]] void give_up() const {
    if (errno == ENOMEM)
      LogWrite(kOutOfMemoryInChild, kServiceSource, __LINE__, "out of memory");
    else
      log(kErrorWithErrno, "server( %s:%s ) start failed", __LINE__);
    _exit(kCannotRun);
  }

  // A daemon that cannot have a record runs all the same; one that runs already stays the only one.
  void enter_record(const char* parameters) {
    const RecordPath path(service_);
    keep_descriptors_from_program(path.text());
    record_ = register_daemon(path.text(), O_NOFOLLOW, object_, interface_, parameters);
    if (record_ >= 0) return;
    if (errno != EBUSY) {
      log(kWarningWithErrno, "DaemonRegister(%s:%s) file handler operation failed", __LINE__);
      return;
    }
    log(kWarning, "DaemonRegister(%s:%s) failed, may the server already start", __LINE__);
    _exit(kCannotRun);
  }

  [[noreturn]] void become_program(const char* parameters) const {
    constexpr size_t kPunctuation = sizeof ".[]";
    const size_t size =
        strlen(object_) + strlen(interface_) + (parameters ? strlen(parameters) : 0) + kPunctuation;
    const OwnedText identifier(static_cast<char*>(malloc(size)));
    if (!identifier) give_up();
    UiiAssembly(object_, interface_, parameters, identifier.get(), static_cast<int>(size));
    execlp(kProgram, service_, identifier.get(), static_cast<char*>(nullptr));
    log(kErrorWithErrno, "server( %s:%s ) start failed", __LINE__);
    if (record_ >= 0) DaemonFree(record_);
    _exit(kCannotRun);
  }

  const char* service_;
  const char* object_;
  const char* interface_;
  char call_[kPathSize];
  int record_ = -1;
};

}  // namespace

extern "C" int ServiceStart(const char* service, const char* object, const char* interface,
                            const char* format, ...) {
  if (!object || !interface) return fail(EINVAL, -1);
  if (!is_service_name(service)) return -1;
  LaunchNotice notice;
  va_list arguments;
  va_start(arguments, format);
  const pid_t child = fork();
  if (child == 0) {
    Daemon daemon(service, object, interface);
    daemon.leave_caller(notice);
    daemon.run(format, arguments);
  }
  va_end(arguments);
  if (child < 0) {
    LogWrite(kErrorWithErrno, kServiceSource, __LINE__, "fork error for ServiceStart( %s )",
             service);
    return -1;
  }
  notice.wait(child);
  return 0;
}
