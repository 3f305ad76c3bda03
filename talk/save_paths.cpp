// Finding the place of a save.
#include "talk/save_paths.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/fail.h"

namespace fairlead {
namespace {

constexpr int kMaxLinks = 40;  // as many as the kernel follows

std::string_view folder_of(const char* path) {
  const char* slash = strrchr(path, '/');
  if (!slash) return ".";
  return {path, slash == path ? 1 : static_cast<size_t>(slash - path)};
}

std::string_view name_of_file(const char* path) {
  const char* slash = strrchr(path, '/');
  return slash ? slash + 1 : path;
}

}  // namespace

bool SavePaths::find(const char* path) {
  if (realpath(path, target_)) return name_the_rest();
  return errno == ENOENT && follow_links(path) && name_the_rest();
}

// The file is missing: a link that dangles names the place where it is to be made.
bool SavePaths::follow_links(const char* path) {
  BoundedText target(target_, sizeof target_);
  target.add(path);
  for (int links = 0; links < kMaxLinks && !target.cut(); ++links) {
    char content[PATH_MAX];
    const ssize_t length = readlink(target_, content, sizeof content);
    if (length < 0) return errno == ENOENT || errno == EINVAL;
    const std::string_view link(content, static_cast<size_t>(length));
    if (link.size() == sizeof content) return fail<bool>(ENAMETOOLONG);
    FixedText<PATH_MAX> next;
    if (link.empty() || link.front() != '/') next.add(folder_of(target_)).add('/');
    next.add(link);
    if (next.cut()) return fail<bool>(ENAMETOOLONG);
    target.restart().add(next.text());
  }
  return fail<bool>(target.cut() ? ENAMETOOLONG : ELOOP);
}

bool SavePaths::name_the_rest() {
  constexpr size_t kRoom = NAME_MAX - 1 - kSavingSuffix.size();
  const std::string_view name = name_of_file(target_);
  folder_.add(folder_of(target_));
  temporary_.add(folder_.text())
      .add("/.")
      .add({name.data(), name.size() < kRoom ? name.size() : kRoom})
      .add(kSavingSuffix);
  return temporary_.cut() ? fail<bool>(ENAMETOOLONG) : true;
}

}  // namespace fairlead
