// The project tree: its projects, their adapters and configuration files, and paths inside it.
#include "fairlead/adp/project.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>

#include "adp/fixed_paths.h"
#include "base/bounded_text.h"
#include "base/directory.h"
#include "base/fail.h"
#include "base/leads_up.h"
#include "base/result_buffer.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// Where the name is cut: at the first extension that occurs anywhere in it, not only at its end. So
// a file kept beside as wan.adp.old is listed as well; tools that look for leftovers rely on it.
const char* find_extension(const char* name, const char* const* extensions) {
  for (; *extensions; ++extensions)
    if (const char* found = strstr(name, *extensions)) return found;
  return nullptr;
}

// False with errno ENOMEM: the listing lacks a file. False with another: there is no such folder.
bool add_project(vessel_t* listing, const char* project, const char* const* extensions) {
  PathText folder;
  folder.add(kProjectRoot).add('/').add(project);
  if (folder.cut()) return fail<bool>(ENAMETOOLONG);  // it would be another folder
  Directory directory(folder.text());
  if (!directory) return false;

  while (const char* name = directory.next_visible()) {
    const char* end = find_extension(name, extensions);
    if (!end) continue;
    FixedText<2 * kPathSize> key;
    key.add(project).add('/').add({name, static_cast<size_t>(end - name)});
    FixedText<2 * kPathSize> file;
    file.add(folder.text()).add('/').add(name);
    if (!VesselSetS(listing, key.text(), file.text())) return fail<bool>(ENOMEM);
  }
  return true;
}

vessel_t* list_all_projects(const char* const* extensions) {
  const OwnedTalk projects(ProjectList());
  if (!projects) return errno == ENOMEM ? nullptr : VesselCreate();
  OwnedTalk listing(VesselCreate());
  if (!listing) return nullptr;
  for (axp_t* project = VesselEach(projects.get(), nullptr); project;
       project = VesselEach(projects.get(), project))
    if (!add_project(listing.get(), AxpGet(project), extensions) && errno == ENOMEM) return nullptr;
  return listing.release();
}

vessel_t* list(const char* project, const char* const* extensions) {
  if (!project) return list_all_projects(extensions);
  OwnedTalk listing(VesselCreate());
  return listing && add_project(listing.get(), project, extensions) ? listing.release() : nullptr;
}

}  // namespace

extern "C" vessel_t* ProjectList(void) {
  Directory directory(kProjectRoot);
  if (!directory) return nullptr;
  OwnedTalk projects(VesselCreate());
  if (!projects) return nullptr;
  while (const char* name = directory.next_visible()) {
    FixedText<2 * kPathSize> path;
    path.add(kProjectRoot).add('/').add(name);
    if (!VesselSetS(projects.get(), name, path.text())) return fail<vessel_t*>(ENOMEM);
  }
  return projects.release();
}

extern "C" char* ProjectPath(const char* project, char* buffer, int size) {
  static char fallback[kPathSize];
  if (!project) return nullptr;
  const ResultBuffer result = choose_buffer(buffer, size, fallback);
  return BoundedText(result.text, result.size).add(kProjectRoot).add('/').add(project).text();
}

extern "C" vessel_t* ProjectAdpList(const char* project) {
  static constexpr const char* kExtensions[] = {kModuleExtension, kScriptExtension, nullptr};
  return list(project, kExtensions);
}

extern "C" vessel_t* ProjectCfgList(const char* project) {
  static constexpr const char* kExtensions[] = {kConfigExtension, nullptr};
  return list(project, kExtensions);
}

extern "C" char* ProjectAdpPath(slash_t* path, char* buffer, int size) {
  static char fallback[kPathSize];
  const char* object = SlashString(path);
  if (!object || leads_up(object)) return nullptr;
  const ResultBuffer result = choose_buffer(buffer, size, fallback);
  for (const char* extension : {kModuleExtension, kScriptExtension}) {
    BoundedText file(result.text, result.size);
    file.add(kProjectRoot).add('/').add(object).add(extension);
    if (!file.cut() && access(file.text(), F_OK) == 0) return result.text;
  }
  return nullptr;
}

extern "C" char* ProjectOscPath(char* buffer, int size, const char* project, const char* format,
                                ...) {
  static char fallback[kPathSize];
  if (!project || !format) return nullptr;
  const ResultBuffer result = choose_buffer(buffer, size, fallback);
  BoundedText file(result.text, result.size);
  file.add(kProjectRoot).add('/').add(project).add('/');
  va_list arguments;
  va_start(arguments, format);
  file.vformat(format, arguments);
  va_end(arguments);
  if (file.cut()) return nullptr;

  struct stat status;
  if (stat(file.text(), &status) != 0 || S_ISDIR(status.st_mode)) return nullptr;
  return result.text;
}
