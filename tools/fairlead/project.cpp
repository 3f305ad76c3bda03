// Projects and their default settings.
#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "fairlead/adp/project.h"
#include "fairlead/config.h"
#include "fairlead/misc/files.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/apart.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

bool exists(const char* project) {
  const fairlead::OwnedTalk all(ProjectList());
  return all && VesselFind(all.get(), project);
}

bool installs(const Call& call) {
  const OutputApart apart(call);
  return ConfigInstall(call.argument(0)) == 1;
}

bool uninstalls(const Call& call) {
  const OutputApart apart(call);
  return ConfigUninstall(call.argument(0)) == 1;
}

// The library counts a file as installed whether or not its copy succeeds.
Exit check_installed(const Call& call) {
  const fairlead::OwnedTalk settings(ProjectCfgList(call.argument(0)));
  if (!settings) return fail("what was installed cannot be looked at");
  axp_t* file = nullptr;
  while ((file = VesselEach(settings.get(), file))) {
    fairlead::PathText copy;
    copy.format("/etc/config/%s.cfg", AxpGet(file));
    if (file_cmp(AxpGetS(file), copy.text()) != 0) return fail("'%s' was not copied", copy.text());
  }
  return done(call);
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
  if (installs(call)) return check_installed(call);
  if (!exists(call.argument(0))) return nothing("there is no project '%s'", call.argument(0));
  return nothing("'%s' has no settings to install", call.argument(0));
}

Exit project_uninstall(const Call& call) {
  errno = 0;
  if (uninstalls(call)) return done(call);
  if (errno == ENOENT) return nothing("'%s' has no settings installed", call.argument(0));
  return fail_because(errno, "the settings of '%s' cannot all be removed", call.argument(0));
}

}  // namespace control
