// The configuration store.
#include "fairlead/config.h"

#include <cerrno>
#include <cstring>

#include "fairlead/talk/text.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"
#include "tools/storable.h"
#include "tools/telling.h"

namespace control {

namespace {

// A path without a segment means the whole object, which the library wants to be told by null.
const char* path_or_whole(const char* path) {
  return path && path[strspn(path, "/")] != '\0' ? path : nullptr;
}

// The library takes names as they are; one with such a segment would lead out of the store.
bool stays_inside(const char* name) {
  for (const char* at = name; at; at = strchr(at, '/')) {
    at += *at == '/';
    const size_t length = strcspn(at, "/");
    if ((length == 1 && at[0] == '.') || (length == 2 && at[0] == '.' && at[1] == '.'))
      return false;
  }
  return true;
}

Exit refuse_name(const char* name) {
  return refuse("'%s' is no configuration: '.' and '..' are no names", name);
}

Exit refused(const Call& call, const char* what) {
  const int error = errno;
  const char* path = path_or_whole(call.argument(1));
  return fail_because(error == EINVAL ? 0 : error, "%s%s%s cannot be %s", call.argument(0),
                      path ? ":" : "", path ? path : "", what);
}

}  // namespace

Exit config_list(const Call& call) {
  const char* folder = call.argument(0);
  if (folder && !stays_inside(folder)) return refuse_name(folder);
  const fairlead::OwnedTalk files(ConfigList(folder));
  if ((!files || !files->child) && folder)
    return nothing("there is no configuration in '%s'", folder);
  if (!files || !files->child) return nothing("there is no configuration");
  return show(call, files.get());
}

Exit config_get(const Call& call) {
  if (!stays_inside(call.argument(0))) return refuse_name(call.argument(0));
  errno = 0;
  const char* path = path_or_whole(call.argument(1));
  const fairlead::OwnedTalk value(ConfigGet(call.argument(0), nullptr, path));
  if (value) return show(call, value.get());
  if (tools::telling(errno)) return refused(call, "read");
  return nothing("nothing at %s%s%s", call.argument(0), path ? ":" : "", path ? path : "");
}

Exit config_set(const Call& call) {
  if (!stays_inside(call.argument(0))) return refuse_name(call.argument(0));
  const char* text = call.argument(2);
  const fairlead::OwnedTalk value(StringTalk(text));
  // The library would take it for a deletion.
  if (!value)
    return refuse("'%s' is no value: it is empty, or begins like an object and is none", text);
  const char* path = path_or_whole(call.argument(1));
  if (!tools::storable(call.argument(1)) ||
      (RenderCheck(value.get()) && !tools::storable(RenderString(value.get()))))
    return refuse("'%s': a double quote is written \\\" and a backslash \\\\ in a stored text",
                  text);
  if (!path && RenderCheck(value.get()))
    return refuse("'%s': the value of a whole object is an object, {...}", text);
  errno = 0;
  if (ConfigSet(call.argument(0), nullptr, path, value.get()) == 1) return done(call);
  return refused(call, "set");
}

Exit config_delete(const Call& call) {
  if (!stays_inside(call.argument(0))) return refuse_name(call.argument(0));
  errno = 0;
  const char* path = path_or_whole(call.argument(1));
  const fairlead::OwnedTalk present(ConfigGet(call.argument(0), nullptr, path));
  if (!present && !tools::telling(errno))
    return nothing("nothing at %s%s%s", call.argument(0), path ? ":" : "", path ? path : "");
  errno = 0;
  if (ConfigSet(call.argument(0), nullptr, path, nullptr) == 1) return done(call);
  return refused(call, "deleted");
}

}  // namespace control
