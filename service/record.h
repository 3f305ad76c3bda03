// A record as its readers see it: who holds its lock, and what it says.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/owned.h"
#include "service/record_layout.h"

namespace fairlead {

// For opening whatever stands in a record's place: without a wait for the other end of a FIFO, and
// without following a link to a file elsewhere.
inline constexpr int kAsItStands = O_NONBLOCK | O_NOFOLLOW;

// The process that holds the record exclusively, which only its daemon does, or -1. The caller's
// own lock is not seen. 0: a process that has no number here, one of another container.
pid_t lock_holder(int fd);

// The descriptor by which this process itself holds the record's lock, or -1. Opening and closing
// such a record would release the lock: the kernel drops a process' locks on a file with the first
// descriptor of it that the process closes.
int own_lock(const char* path);

// A record opened for reading. A daemon that looks at its own keeps its lock.
class OpenRecord {
 public:
  explicit OpenRecord(const char* path);

  explicit operator bool() const { return fd() >= 0; }
  int fd() const { return own_ >= 0 ? own_ : file_.get(); }
  pid_t holder() const;  // as lock_holder, this process included

 private:
  int own_ = -1;
  Descriptor file_;
};

// The texts of a record. A name that fills its room has no terminator; the parameters may lack one.
class RecordTexts {
 public:
  // False when the file is no record: none to read, too short or too long, without an object.
  bool read(int fd);

  const char* object() const { return object_.text(); }
  const char* interface() const { return interface_.text(); }
  char* parameters() { return parameters_; }

 private:
  bool read_whole(int fd, size_t size);

  OwnedText content_;
  FixedText<kNameRoom + 1> object_, interface_;
  char* parameters_ = nullptr;
};

}  // namespace fairlead
