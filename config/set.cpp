// Writing and deleting in the configuration store.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "base/fail.h"
#include "base/sync_folder.h"
#include "config/folder.h"
#include "config/paths.h"
#include "fairlead/config.h"
#include "fairlead/misc/files.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "talk/file_text.h"
#include "talk/member_path.h"
#include "talk/owned_talk.h"
#include "talk/path_choice.h"
#include "talk/readable.h"
#include "talk/replace_file.h"

namespace {

using namespace fairlead;

constexpr char kMarker[] = "/etc/config/version";
constexpr int kAttempts = 8;  // each is lost to another process that removed the folder

// JSON, but not the object that a configuration must be; whoever wrote it meant it, so it is not
// replaced.
bool is_other_json(const char* text) {
  const OwnedText wrapped = [&] {
    const size_t size = strlen(text) + sizeof "{\"v\":}";
    OwnedText block(static_cast<char*>(malloc(size)));
    if (block) BoundedText(block.get(), size).add("{\"v\":").add(text).add('}');
    return block;
  }();
  const OwnedTalk document(wrapped ? StringVessel(wrapped.get()) : nullptr);
  if (!document) return content_unknown();  // for lack of memory: it may be
  return VesselCount(document.get()) == 1;
}

// The document that a change starts from; null when the file must stay as it is.
vessel_t* read_for_change(const char* file) {
  const OwnedText text = read_file_text(file);
  vessel_t* document = text ? StringVessel(text.get()) : nullptr;
  if (document || content_unknown()) return document;
  return text && is_other_json(text.get()) ? nullptr : VesselCreate();
}

int change_member(const char* file, slash_t* path, talk_t* value) {
  const OwnedTalk document(read_for_change(file));
  if (!document) return 0;
  if (!value) return remove_at(document.get(), path) ? save_readable(document.get(), file) : 0;

  OwnedTalk copy(TalkDup(value));
  if (!copy || !put_at(document.get(), path, copy.get())) return 0;
  (void)copy.release();  // the document's now
  return save_readable(document.get(), file);
}

// The folder goes with its last file, the root never.
bool remove_if_empty(const char* folder) {
  return strcmp(folder, kConfigRoot) != 0 && dir_sum(folder) < 1 && rmdir(folder) == 0;
}

// Another process may have removed the folder by now; then it is the one above that knows of it.
bool sync_removal(PathText& folder) {
  while (!sync_folder(folder.text())) {
    if (errno != ENOENT || strcmp(folder.text(), kConfigRoot) == 0) return false;
    *strrchr(folder.text(), '/') = '\0';
  }
  return true;
}

// A folder that is there without the file was left by a killed deletion.
int remove_file(const ConfigPath& file) {
  remove_leftover(file.text());
  const bool removed = unlink(file.text()) == 0;
  if (!removed && errno != ENOENT) return 0;
  PathText folder;
  folder.add(file.folder());
  const int before = errno;
  if (remove_if_empty(folder.text())) *strrchr(folder.text(), '/') = '\0';
  if (removed && !sync_removal(folder)) return 0;
  errno = before;
  return removed ? 1 : 0;
}

int change_once(const ConfigPath& file, slash_t* path, talk_t* value) {
  PathText folder;
  folder.add(file.folder());
  if (!ensure_config_folder(folder.text())) return 0;
  if (path && path->count > 0) return change_member(file.text(), path, value);
  return value ? save_readable(value, file.text()) : remove_file(file);
}

// Another process may remove the folder, with the last file in it, before the new one is there.
int change(const ConfigPath& file, slash_t* path, talk_t* value) {
  int result = 0;
  for (int attempts = 0; attempts < kAttempts; ++attempts) {
    result = change_once(file, path, value);
    if (result == 1 || errno != ENOENT || !value) break;
  }
  return result;
}

// Tells other programs that the configuration has changed since they removed the marker. An
// existing one stays.
void leave_marker() {
  const ErrnoKeeper keep;
  struct stat status;
  if (stat(kMarker, &status) != 0) write_string(kMarker, "modify");
}

}  // namespace

extern "C" int ConfigSet(const char* name, slash_t* path, const char* path_text, talk_t* value) {
  if (!name) return fail<int>(EINVAL);
  PathChoice choice(path, path_text);
  if (!choice.usable() || (choice.parsed() && choice.count() == 0)) return 0;

  const int result = change(ConfigPath(name), choice.get(), value);
  if (result == 1) leave_marker();
  return result;
}

// A text that gives no value deletes: what cannot be stored must not leave the old value in force.
// Lost memory is no such text.
extern "C" int ConfigSetS(const char* name, slash_t* path, const char* path_text,
                          const char* value) {
  const OwnedTalk talk(StringTalk(value));
  if (!talk && errno == ENOMEM) return 0;
  return ConfigSet(name, path, path_text, talk.get());
}
