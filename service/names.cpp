// Scans the folder of the records.
#include "service/names.h"

#include <cstdlib>
#include <cstring>

#include "base/errno_keeper.h"
#include "service/record_path.h"

namespace fairlead {
namespace {

// The first extension stands at the very end: copies such as "wan.spid.old" are no records.
int is_record(const dirent* entry) {
  const char* extension = strstr(entry->d_name, kRecordExtension);
  return entry->d_name[0] != '.' && extension && strcmp(extension, kRecordExtension) == 0 ? 1 : 0;
}

}  // namespace

ServiceNames::ServiceNames() {
  char folder[kPathSize];
  if (!service_folder(folder, sizeof folder)) return;
  count_ = scandir(folder, &entries_, is_record, alphasort);
  for (int i = 0; i < count_; ++i) *strstr(entries_[i]->d_name, kRecordExtension) = '\0';
}

ServiceNames::~ServiceNames() {
  const ErrnoKeeper keep;
  for (int i = 0; i < count_; ++i) free(entries_[i]);
  free(entries_);
}

}  // namespace fairlead
