// Documents in files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/talk/text.h"
#include "misc/locked_file.h"
#include "talk/file_text.h"
#include "talk/replace_file.h"

using fairlead::OwnedText;

OwnedText fairlead::read_file_text(const char* path) {
  // A FIFO in the file's place gives nothing rather than a wait for its writer.
  LockedFile file(path, O_RDONLY | O_NONBLOCK);
  if (!file) return {};
  struct stat status;
  if (fstat(file.get(), &status) != 0) return {};
  if (status.st_size >= SSIZE_MAX) return fail<OwnedText>(ENOMEM);
  const auto size = static_cast<size_t>(status.st_size);
  OwnedText text(static_cast<char*>(malloc(size + 1)));
  if (!text) return {};
  const ssize_t length = read(file.get(), text.get(), size);
  if (length < 0) return {};
  if (length == 0) return fail<OwnedText>(EINVAL);  // no document, like any other bad text
  text.get()[length] = '\0';
  return text;
}

extern "C" vessel_t* FileVessel(const char* path) {
  const int before = errno;
  const OwnedText text = fairlead::read_file_text(path);
  if (!text) return nullptr;
  vessel_t* vessel = StringVessel(text.get());
  if (vessel) errno = before;
  return vessel;
}

extern "C" int VesselFile(vessel_t* vessel, const char* path) {
  const OwnedText text(VesselString(vessel));
  if (!text) return 0;
  if (!path || !*path) return fairlead::fail<int>(EINVAL);
  if (!*text.get()) return 0;
  const int before = errno;
  if (!fairlead::replace_file(path, {text.get(), strlen(text.get())})) return 0;
  errno = before;
  return 1;
}
