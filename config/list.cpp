// What exists in the configuration store.
#include <sys/stat.h>

#include <cstring>

#include "base/directory.h"
#include "base/fail.h"
#include "config/paths.h"
#include "fairlead/config.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// The stem ends at the first extension anywhere in the name, so a copy such as lan.cfg.bak lists as
// lan too.
void add_file(vessel_t* listing, const char* name, const char* path) {
  const char* extension = strstr(name, kConfigSuffix);
  if (!extension) return;
  PathText stem;
  stem.add({name, static_cast<size_t>(extension - name)});
  VesselSetS(listing, stem.text(), path);
}

void add_folder(vessel_t* listing, const char* name, const char* path) {
  OwnedTalk inner(config_list_all(path));
  if (inner && VesselSetX(listing, name, inner.get())) (void)inner.release();
}

}  // namespace

extern "C" vessel_t* ConfigList(const char* name) {
  if (!name) return config_list_all(kConfigRoot);
  PathText folder;
  folder.add(kConfigRoot).add('/').add(name);
  return config_list_all(folder.text());
}

extern "C" vessel_t* config_list_all(const char* directory) {
  if (!directory) return fail<vessel_t*>(EINVAL);
  Directory stream(directory);
  if (!stream) return nullptr;
  OwnedTalk listing(VesselCreate());
  if (!listing) return nullptr;
  while (const char* name = stream.next_visible()) {
    PathText path;
    path.add(directory).add('/').add(name);
    struct stat status;
    // A path that was cut names something else; leaving it out also ends a loop of links.
    if (path.cut() || stat(path.text(), &status) != 0) continue;
    if (S_ISDIR(status.st_mode))
      add_folder(listing.get(), name, path.text());
    else
      add_file(listing.get(), name, path.text());
  }
  return listing.release();
}
