// Watches the services: restarts dead ones, and waits longer and longer for one that keeps dying.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/percent.h"
#include "base/signal_scope.h"
#include "fairlead/adp/project.h"
#include "fairlead/service.h"
#include "fairlead/talk/node.h"
#include "service/record.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

using fairlead::OwnedTalk;

constexpr int kLongestPause = 300;  // seconds
constexpr int kStable = 60;         // a service that lived this long has recovered
constexpr size_t kMostServices = 128;

// What the watch remembers of a service that has died.
struct Patient {
  char name[fairlead::kPathSize];
  time_t died;     // when the watch last found it dead
  time_t restart;  // not before
  int pause;       // seconds until then
};

// Patients live in a fixed table; when it is full, a further service is restarted without a pause.
struct Ward {
  Patient patients[kMostServices];
  size_t count = 0;

  Patient* find(const char* name) {
    for (size_t i = 0; i < count; ++i)
      if (strcmp(patients[i].name, name) == 0) return &patients[i];
    return nullptr;
  }

  Patient* admit(const char* name) {
    if (count == kMostServices) return nullptr;
    Patient& patient = patients[count++];
    patient = {};
    fairlead::BoundedText(patient.name, sizeof patient.name).add(name);
    return &patient;
  }
};

time_t now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec;
}

volatile sig_atomic_t ended = 0;  // by a signal, the one thread's own

void end_watch(int) { ended = 1; }

void tell(const Call& call, const char* service, const char* what, int pause) {
  if (call.options.json)
    printf("{\"service\":\"%s\",\"event\":\"%s\",\"pause\":\"%d\"}\n", service, what, pause);
  else if (pause > 0)
    printf("%s: %s, the next restart not before %d s\n", service, what, pause);
  else
    printf("%s: %s\n", service, what);
  fflush(stdout);
}

// As DaemonCheck does it, for one service: the stored parameters are taken for a format again.
void restart(const char* name) {
  char path[fairlead::kPathSize];
  if (!ProjectVarPath(path, sizeof path, "service", "%s.spid", name)) return;
  const fairlead::Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  fairlead::RecordTexts record;
  if (!file || !record.read(file.get())) return;
  fairlead::halve_percent(record.parameters());
  if (*record.parameters())
    ServiceStart(name, record.object(), record.interface(), "%s", record.parameters());
  else
    ServiceStart(name, record.object(), record.interface(), nullptr);
}

// A service found dead: at once the first time, after a doubled pause when it had not recovered.
void treat(const Call& call, Ward& ward, const char* name) {
  Patient* patient = ward.find(name);
  const time_t time = now();
  if (patient && time < patient->restart) return;
  if (!patient) patient = ward.admit(name);
  int pause = 0;
  if (patient) {
    const bool relapse = patient->pause > 0 && time - patient->died < kStable + patient->pause;
    pause = relapse ? std::min(patient->pause * 2, kLongestPause) : call.options.interval;
    patient->pause = pause;
    patient->died = time;
    patient->restart = time + pause;
  }
  restart(name);
  tell(call, name, "was dead and is restarted", pause);
}

bool is_dead(vessel_t* info) {
  const char* status = VesselGetS(info, "status");
  return status && strcmp(status, "die") == 0 && VesselGetS(info, "func");
}

void check(const Call& call, Ward& ward) {
  const OwnedTalk services(ServiceList());
  if (!services) return;
  for (axp_t* service = services->child; service; service = service->next)
    if (VesselCheck(service->child) && is_dead(service->child)) treat(call, ward, service->text);
}

}  // namespace

Exit service_watch(const Call& call) {
  static Ward ward;  // too large for a small stack
  ended = 0;
  fairlead::HandlerScope on_end(SIGTERM, end_watch);
  fairlead::HandlerScope on_interrupt(SIGINT, end_watch);
  // Open only inside the wait, so that no signal is missed just before it.
  fairlead::MaskScope mask;
  sigset_t closed = mask.former();
  sigaddset(&closed, SIGTERM);
  sigaddset(&closed, SIGINT);
  const timespec interval = {call.options.interval, 0};
  while (!ended) {
    check(call, ward);
    sigprocmask(SIG_SETMASK, &closed, nullptr);
    if (!ended) pselect(0, nullptr, nullptr, nullptr, &interval, &mask.former());
    mask.put_back();
  }
  return kDone;
}

}  // namespace control
