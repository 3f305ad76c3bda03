// Projects and their default settings.
#include <cerrno>
#include <cstring>

#include "fairlead/adp/project.h"
#include "fairlead/config.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

bool exists(const char* project) {
  const fairlead::OwnedTalk all(ProjectList());
  return all && VesselFind(all.get(), project);
}

}  // namespace

Exit project_list(const Call& call) {
  const char* project = call.argument(0);
  if (!project) {
    const fairlead::OwnedTalk all(ProjectList());
    if (!all || !all->child) return nothing("there are no projects in /prj");
    return show(call, all.get());
  }
  const fairlead::OwnedTalk files(VesselCreate());
  if (!files) return fail("out of memory");
  fairlead::OwnedTalk adapters(ProjectAdpList(project));
  fairlead::OwnedTalk settings(ProjectCfgList(project));
  if (!adapters && !settings) return nothing("there is no project '%s'", project);
  if (adapters && VesselSetX(files.get(), "adapters", adapters.get())) (void)adapters.release();
  if (settings && VesselSetX(files.get(), "settings", settings.get())) (void)settings.release();
  return show(call, files.get());
}

Exit project_install(const Call& call) {
  if (ConfigInstall(call.argument(0)) == 1) return done(call);
  if (!exists(call.argument(0))) return nothing("there is no project '%s'", call.argument(0));
  return nothing("'%s' has no settings to install", call.argument(0));
}

Exit project_uninstall(const Call& call) {
  errno = 0;
  if (ConfigUninstall(call.argument(0)) == 1) return done(call);
  if (errno == ENOENT) return nothing("'%s' has no settings installed", call.argument(0));
  return fail_because(errno, "the settings of '%s' cannot all be removed", call.argument(0));
}

}  // namespace control
