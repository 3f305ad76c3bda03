// What exists in the configuration store.
#include <sys/stat.h>

#include <cstring>

#include "base/directory.h"
#include "base/fail.h"
#include "base/same_file.h"
#include "config/paths.h"
#include "fairlead/config.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// A folder that is listed, and those above it on the way there.
struct Way {
  const char* path;
  const Way* above;

  // Whether one of them is this folder, to which a link leads back: such a listing has no end, or
  // with two links none that anybody lives to see.
  bool leads_back_to(const struct stat& folder) const {
    struct stat own;
    for (const Way* way = this; way; way = way->above)
      if (stat(way->path, &own) == 0 && same_file(own, folder)) return true;
    return false;
  }
};

vessel_t* list(const Way& way);

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
bool add_folder(vessel_t* listing, const char* name, const Way& way) {
  OwnedTalk inner(list(way));
  if (!inner) return errno != ENOMEM;
  if (!VesselSetX(listing, name, inner.get())) return false;
  (void)inner.release();  // the listing's now
  return true;
}

bool add(vessel_t* listing, const char* name, const Way& way) {
  PathText path;
  path.add(way.path).add('/').add(name);
  struct stat status;
  if (path.cut() || stat(path.text(), &status) != 0) return true;  // cut, it names something else
  if (!S_ISDIR(status.st_mode)) return add_file(listing, name, path.text());
  return way.leads_back_to(status) || add_folder(listing, name, {path.text(), &way});
}

vessel_t* list(const Way& way) {
  Directory stream(way.path);
  if (!stream) return nullptr;
  OwnedTalk listing(VesselCreate());
  if (!listing) return nullptr;
  while (const char* name = stream.next_visible())
    if (!add(listing.get(), name, way)) return fail<vessel_t*>(ENOMEM);
  return listing.release();
}

}  // namespace

extern "C" vessel_t* ConfigList(const char* name) {
  if (!name) return config_list_all(kConfigRoot);
  PathText folder;
  folder.add(kConfigRoot).add('/').add(name);
  return config_list_all(folder.text());
}

extern "C" vessel_t* config_list_all(const char* directory) {
  return directory ? list({directory, nullptr}) : fail<vessel_t*>(EINVAL);
}
