// The registry: object paths bound to adapter files at run time.
#include "adp/fixed_paths.h"
#include "base/bounded_text.h"
#include "base/result_buffer.h"
#include "fairlead/adp/project.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "talk/changed_file.h"
#include "talk/member_path.h"
#include "talk/owned_talk.h"
#include "talk/path_choice.h"
#include "talk/readable.h"

namespace {

using namespace fairlead;

constexpr size_t kTextLimit = kPathSize - 1;

}  // namespace

extern "C" int DynAdpCreate(const char* object, const char* adapter) {
  if (!object || !adapter) return 0;
  PathChoice object_path(nullptr, object, kTextLimit);
  PathChoice adapter_path(nullptr, adapter, kTextLimit);
  char file[kPathSize];
  if (object_path.count() == 0 || adapter_path.count() == 0) return 0;
  if (!ProjectAdpPath(adapter_path.get(), file, sizeof file)) return 0;

  const OwnedTalk registry = read_to_change(kRegistryFile);
  OwnedTalk value(RenderCreate(file));
  if (!registry || !value || !put_at(registry.get(), object_path.get(), value.get())) return 0;
  (void)value.release();  // the registry's now
  return save_readable(registry.get(), kRegistryFile);
}

extern "C" int DynAdpDelete(const char* object) {
  if (!object) return 0;
  PathChoice path(nullptr, object, kTextLimit);
  if (path.count() == 0) return 0;
  const OwnedTalk registry(FileVessel(kRegistryFile));
  if (!registry || !remove_at(registry.get(), path.get())) return 0;
  return save_readable(registry.get(), kRegistryFile);
}

extern "C" talk_t* DynAdpList(const char* name) {
  OwnedTalk registry(FileVessel(kRegistryFile));
  if (!registry || !name) return registry.release();
  return VesselCutX(registry.get(), name);
}

extern "C" char* DynAdpPath(slash_t* path, char* buffer, int size) {
  static char fallback[kPathSize];
  if (!path || path->count < 1) return nullptr;
  const OwnedTalk registry(FileVessel(kRegistryFile));
  const talk_t* value = registry ? find_at(registry.get(), path) : nullptr;
  if (!value || !RenderCheck(value)) return nullptr;
  const ResultBuffer result = choose_buffer(buffer, size, fallback);
  return BoundedText(result.text, result.size).add(RenderString(value)).text();
}
