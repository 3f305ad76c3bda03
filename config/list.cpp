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
// lan too. False: memory ran out.
bool add_file(vessel_t* listing, const char* name, const char* path) {
  const char* extension = strstr(name, kConfigSuffix);
  if (!extension) return true;
  PathText stem;
  stem.add({name, static_cast<size_t>(extension - name)});
  return VesselSetS(listing, stem.text(), path) == 1;
}

// A folder that cannot be read adds nothing.
bool add_folder(vessel_t* listing, const char* name, const char* path) {
  OwnedTalk inner(config_list_all(path));
  if (!inner) return errno != ENOMEM;
  if (!VesselSetX(listing, name, inner.get())) return false;
  (void)inner.release();  // the listing's now
  return true;
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
    const auto add = S_ISDIR(status.st_mode) ? add_folder : add_file;
    if (!add(listing.get(), name, path.text())) return fail<vessel_t*>(ENOMEM);
  }
  return listing.release();
}
