// Brings back the services whose daemons have died.
#include "base/percent.h"
#include "fairlead/service.h"
#include "log/level_words.h"
#include "service/log_source.h"
#include "service/names.h"
#include "service/record.h"
#include "service/record_path.h"

namespace {

using namespace fairlead;

// Whether the service is dead; its texts are read then. The record is closed again before anything
// is started: a daemon that inherited it would lose its lock with it.
bool is_dead(const char* service, RecordTexts& texts) {
  const RecordPath path(service);
  const OpenRecord record(path.text());
  return record && record.holder() == -1 && texts.read(record.fd());
}

void restart(const char* service, RecordTexts& texts) {
  const char* interface = *texts.interface() ? texts.interface() : nullptr;
  if (!*texts.parameters()) {
    ServiceStart(service, texts.object(), interface, nullptr);
    return;
  }
  // Stored parameters are taken for a format again; callers double their percent signs for that.
  halve_percent(texts.parameters());
  ServiceStart(service, texts.object(), interface, "%s", texts.parameters());
}

}  // namespace

extern "C" int DaemonCheck(void) {
  ServiceNames names;
  if (!names) return -1;
  while (const char* service = names.next()) {
    RecordTexts texts;
    if (!is_dead(service, texts)) continue;
    LogWrite(kDebug, kServiceSource, __LINE__, "server( %s ) abnormal terminate", service);
    restart(service, texts);
  }
  return 0;
}
