// A project's default configuration files, copied into the store and removed again.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string_view>

#include "base/directory.h"
#include "base/fail.h"
#include "base/leads_up.h"
#include "config/folder.h"
#include "config/paths.h"
#include "fairlead/adp/project.h"
#include "fairlead/config.h"
#include "fairlead/misc/files.h"
#include "fairlead/talk/node.h"
#include "log/level_words.h"
#include "talk/owned_talk.h"
#include "talk/replace_file.h"

namespace {

using namespace fairlead;

bool install(const char* name, const char* source, const char* project) {
  const ConfigPath destination(name);
  PathText folder;
  folder.add(destination.folder());
  if (access(folder.text(), R_OK) != 0 && mkdir(folder.text(), 0770) != 0) return false;
  LogWrite(kNotice, "config", __LINE__, "install a config %s to %s by %s", source,
           destination.text(), project);
  // Such as a device, which may have no end.
  struct stat status;
  if (stat(source, &status) == 0 && S_ISREG(status.st_mode)) file_copy(source, destination.text());
  return true;
}

// Whether the name stays below the root: "" and "." are the whole store.
bool is_project(const char* name) {
  bool named = false;
  while (*(name += strspn(name, "/")) != '\0') {
    const std::string_view segment(name, strcspn(name, "/"));
    if (segment == ".") return false;
    named = true;
    name += segment.size();
  }
  return named;
}

}  // namespace

extern "C" int ConfigInstall(const char* project) {
  if (!project || leads_up(project)) return fail<int>(EINVAL);
  const OwnedTalk list(ProjectCfgList(project));
  if (!list) return 0;
  int installed = 0;
  for (axp_t* member = VesselEach(list.get(), nullptr); member;
       member = VesselEach(list.get(), member))
    if (install(AxpGet(member), AxpGetS(member), project)) installed = 1;
  return installed;
}

extern "C" int ConfigUninstall(const char* project) {
  if (!project || leads_up(project) || !is_project(project)) return fail<int>(EINVAL);
  PathText folder;
  folder.add(kConfigRoot).add('/').add(project);
  if (folder.cut()) return fail<int>(ENAMETOOLONG);  // it would be another folder
  Directory directory(folder.text());
  if (!directory) return 0;
  while (const char* name = directory.next()) {
    PathText file;
    file.add(folder.text()).add('/').add(name);
    if (is_leftover(name)) remove_unless_held(file.text());
    if (*name == '\0' || *name == '.') continue;
    LogWrite(kNotice, "config", __LINE__, "uninstall a config %s by %s", file.text(), project);
    unlink(file.text());
  }
  return rmdir(folder.text()) == 0 ? 1 : 0;
}
