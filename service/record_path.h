// The path of a service's record.
#pragma once

#include <cstdarg>

#include "base/bounded_text.h"

namespace fairlead {

// What the name of a record's file ends in.
inline constexpr char kRecordExtension[] = ".spid";

// "/tmp/.var/service", made when it is not there; null when that fails.
char* service_folder(char* buffer, int size);

// False with errno: EINVAL null, empty, or with a "/", so that no record lies outside of its
// folder | ENAMETOOLONG its path would be cut.
bool is_service_name(const char* service);

class RecordPath {
 public:
  explicit RecordPath(const char* service) { build(service); }
  __attribute__((format(printf, 2, 0))) RecordPath(const char* format, va_list arguments);

  // False: no path, with errno as by is_service_name, or from the folder that cannot be made.
  explicit operator bool() const { return text() != nullptr; }
  const char* text() const { return built_ ? path_ : nullptr; }

 private:
  void build(const char* service);

  char path_[kPathSize];
  bool built_ = false;
};

}  // namespace fairlead
