// A disk as a power cut leaves it: what was written to it, in order, and what of it had to be
// there.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/traced.h"

namespace fairlead_test {

// What a call did to files below a folder. Names and contents are told apart: each is on disk only
// once it was synced by itself.
struct DiskEvent {
  enum Kind { kMake, kMakeFolder, kRename, kRemove, kWrite, kTruncate, kSync, kSyncFolder };
  Kind kind;
  std::string path;   // of the name; for contents: what identifies the file
  std::string other;  // the new name; for a file made: what identifies it
  size_t at = 0;      // offset or length
  std::string data = {};
};

// Writes the events down while a process is traced.
class DiskLog {
 public:
  explicit DiskLog(std::string root) : root_(std::move(root)) {}

  void watch(const CallMade& call);
  const std::vector<DiskEvent>& events() const { return events_; }

 private:
  std::string path_at(const CallMade& call, int argument) const;
  void opened(const CallMade& call, const std::string& path, uint64_t flags);
  void renamed(const std::string& from, const std::string& to);
  std::string identity(const std::string& path);
  bool inside(const std::string& path) const { return path.rfind(root_, 0) == 0; }

  std::string root_;
  std::vector<DiskEvent> events_;
  std::map<std::pair<pid_t, int>, std::string> open_;  // descriptors: folder, or identity of a file
  std::map<std::string, std::string> identities_;      // by name, where it is not the first name
  std::map<std::pair<pid_t, int>, size_t> positions_;
  int made_ = 0;
};

// Files and folders by name.
struct Disk {
  std::map<std::string, std::string> files;
  std::set<std::string> folders;

  static Disk read(const std::string& root);
  void write(const std::string& root) const;  // in place of what is there
  bool operator<(const Disk& other) const {
    return std::tie(files, folders) < std::tie(other.files, other.folders);
  }
};

// Every disk that a power cut after the first `count` events can leave: what was synced is there,
// of the rest each event for itself is there or not, contents also by half or as zero bytes.
std::set<Disk> after_a_cut(const Disk& before, const std::vector<DiskEvent>& events, size_t count);

}  // namespace fairlead_test
