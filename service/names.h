// The names of the services that have a record, in alphabetical order.
#pragma once

#include <dirent.h>

namespace fairlead {

class ServiceNames {
 public:
  ServiceNames();
  ~ServiceNames();
  ServiceNames(const ServiceNames&) = delete;
  ServiceNames& operator=(const ServiceNames&) = delete;

  // False: the folder could not be read, with errno.
  explicit operator bool() const { return count_ >= 0; }

  // The next name, or null behind the last one.
  const char* next() { return next_ < count_ ? entries_[next_++]->d_name : nullptr; }

 private:
  dirent** entries_ = nullptr;
  int count_ = -1;
  int next_ = 0;
};

}  // namespace fairlead
