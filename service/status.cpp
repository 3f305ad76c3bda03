// What is known of services, as documents.
#include <cerrno>
#include <cstdarg>
#include <utility>

#include "base/fail.h"
#include "fairlead/service.h"
#include "fairlead/talk/path.h"
#include "fairlead/talk/text.h"
#include "log/out_of_memory.h"
#include "service/log_source.h"
#include "service/names.h"
#include "service/record.h"
#include "service/record_path.h"
#include "talk/owned_talk.h"
#include "talk/pieces.h"

namespace {

using namespace fairlead;

// A parameter list that lives as long as the text it was cut from.
class Parameters {
 public:
  explicit Parameters(char* text) { ParamAnalysis(&list_, text); }  // of blanks: an empty list
  ~Parameters() {
    const ErrnoKeeper keep;
    ParamClear(&list_);
  }
  Parameters(const Parameters&) = delete;
  Parameters& operator=(const Parameters&) = delete;

  bool whole() const { return all_entries_made(list_); }
  int count() const { return list_.count; }
  const char* text(int index) const { return ParamGetS(&list_, index); }

 private:
  param_t list_{};
};

// A setter that has no memory for its node says EINVAL; the log tells what it was.
template <class T>
T lost_memory(int line = __builtin_LINE()) {
  errno = ENOMEM;
  return out_of_memory<T>(kServiceSource, line);
}

// The functions below are false when memory has run out.

// An empty parameter and a broken object have no value, and so no member.
bool add_parameter(vessel_t* status, int index, const char* text) {
  OwnedTalk value(text ? StringTalk(text) : nullptr);
  if (!value) return !text || errno != ENOMEM;
  FixedText<24> label;
  label.format("parameter%d", index);
  if (!VesselSetX(status, label.text(), value.get())) return false;
  (void)value.release();  // the status document's now
  return true;
}

bool add_parameters(vessel_t* status, char* text) {
  const Parameters parameters(text);
  if (!parameters.whole()) return false;
  for (int index = 1; index <= parameters.count(); ++index)
    if (!add_parameter(status, index, parameters.text(index))) return false;
  return true;
}

bool add_liveness(vessel_t* status, pid_t holder) {
  if (holder == -1) return VesselSetS(status, "status", "die");
  FixedText<16> pid;
  pid.format("%d", static_cast<int>(holder));
  return VesselSetS(status, "status", "live") && VesselSetS(status, "pid", pid.text());
}

bool fill(vessel_t* status, pid_t holder, RecordTexts& texts) {
  return status && add_liveness(status, holder) && VesselSetS(status, "adp", texts.object()) &&
         (!*texts.interface() || VesselSetS(status, "func", texts.interface())) &&
         add_parameters(status, texts.parameters());
}

// Nothing when there is no record, with errno ENOMEM only when memory has run out.
OwnedTalk describe(const RecordPath& path) {
  const OpenRecord record(path.text());
  RecordTexts texts;
  if (!record) return {};
  errno = 0;
  if (!texts.read(record.fd())) return fail<OwnedTalk>(errno == ENOMEM ? ENOMEM : ENOENT);
  OwnedTalk status(VesselCreate());
  return fill(status.get(), record.holder(), texts) ? std::move(status) : lost_memory<OwnedTalk>();
}

bool add_service(vessel_t* list, const char* service) {
  OwnedTalk status = describe(RecordPath(service));
  if (!status) return errno != ENOMEM;
  if (!VesselSetX(list, service, status.get())) return lost_memory<bool>();
  (void)status.release();  // the list's now
  return true;
}

}  // namespace

extern "C" vessel_t* ServiceInfo(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const RecordPath path(format, arguments);
  va_end(arguments);
  return path ? describe(path).release() : nullptr;
}

extern "C" vessel_t* ServiceList(void) {
  OwnedTalk list(VesselCreate());
  ServiceNames names;
  if (!list || (!names && errno == ENOMEM)) return lost_memory<vessel_t*>();
  while (const char* service = names.next())
    if (!add_service(list.get(), service)) return nullptr;
  return list.release();
}
