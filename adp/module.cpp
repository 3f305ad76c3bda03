// Loading modules and finding their symbols.
#include "adp/module.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstring>

#include "adp/log_source.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "log/out_of_memory.h"

namespace fairlead {
namespace {

// Loaded modules stay until the process ends, and so does this. Not guarded: callers open handles
// from one thread.
[[gnu::used]] struct {
  glink_t list;   // the newest first
  int32_t loads;  // nothing reads it but a debugger, which can tell a lost module from none loaded
} modules;

adp_module_t* module_of(glink_t* link) {
  return reinterpret_cast<adp_module_t*>(reinterpret_cast<char*>(link) -
                                         offsetof(adp_module_t, link));
}

adp_module_t* find_module(const char* file) {
  for (glink_t* link = modules.list.next; link; link = link->next)
    if (strcmp(module_of(link)->file, file) == 0) return module_of(link);
  return nullptr;
}

const char* last_slash(const char* begin, const char* end) {
  return static_cast<const char*>(memrchr(begin, '/', static_cast<size_t>(end - begin)));
}

// For "/prj/net/wan.adp" the project is net and the adapter wan; deeper files give their last two
// levels.
bool cut_names(adp_module_t& module) {
  const char* dot = strrchr(module.file, '.');
  const char* slash = dot ? last_slash(module.file, dot) : nullptr;
  const char* before = slash ? last_slash(module.file, slash) : nullptr;
  if (!before) return false;
  BoundedText(module.adapter, sizeof module.adapter)
      .add({slash + 1, static_cast<size_t>(dot - slash - 1)});
  BoundedText(module.project, sizeof module.project)
      .add({before + 1, static_cast<size_t>(slash - before - 1)});
  return true;
}

// The loader would wait for the writer of a FIFO without end.
bool is_loadable(const char* file) {
  struct stat status;
  if (stat(file, &status) != 0) return false;
  return S_ISREG(status.st_mode) || fail<bool>(EINVAL);
}

// The loader leaves errno alone where no system call failed, as with a module for another machine:
// the log would then tell of whatever failed last.
void* load(const char* file) {
  if (!is_loadable(file)) return nullptr;
  const int before = errno;
  errno = ENOEXEC;
  void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (library) errno = before;
  return library;
}

adp_module_t* load_module(const char* file) {
  Owned<adp_module_t> module = zeroed<adp_module_t>();
  if (!module) return out_of_memory<adp_module_t*>(kAdpSource);
  BoundedText(module->file, sizeof module->file).add(file);
  if (!cut_names(*module)) {
    LogWrite(kError, kAdpSource, __LINE__,
             "cannot parse the project identify and padp identify by path(%s)", file);
    return nullptr;
  }
  module->library = load(file);
  if (!module->library) {
    LogWrite(kErrorWithErrno, kAdpSource, __LINE__, "cannot load the file(%s)", file);
    return nullptr;
  }
  ++modules.loads;
  GlinkInsert(&modules.list, &module->link, nullptr);
  return module.release();
}

}  // namespace

adp_module_t* acquire_module(const char* file) {
  adp_module_t* module = find_module(file);
  if (!module) module = load_module(file);
  if (module) ++module->references;
  return module;
}

ModuleSymbol::ModuleSymbol(const adp_module_t* module, const char* what) {
  BoundedText(name_, sizeof name_).format("%s_%s__%s", module->project, module->adapter, what);
  address_ = dlsym(module->library, name_);
}

adp_set_t set_function(adp_module_t* module) {
  if (!module->set)
    if (const ModuleSymbol symbol(module, "set"); symbol) module->set = symbol.value<adp_set_t>();
  return module->set;
}

adp_get_t get_function(adp_module_t* module) {
  if (!module->get)
    if (const ModuleSymbol symbol(module, "get"); symbol) module->get = symbol.value<adp_get_t>();
  return module->get;
}

}  // namespace fairlead
