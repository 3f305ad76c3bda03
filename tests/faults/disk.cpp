// The model of a disk that keeps nothing but what was synced.
#include "faults/disk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <filesystem>

#include "support/device_test.h"

namespace fairlead_test {
namespace {

namespace fs = std::filesystem;

std::string memory_of(pid_t pid, uint64_t address, size_t size) {
  std::string bytes(size, '\0');
  const iovec to = {bytes.data(), size}, from = {reinterpret_cast<void*>(address), size};
  const ssize_t got = process_vm_readv(pid, &to, 1, &from, 1, 0);
  bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));
  return bytes;
}

std::string text_of(pid_t pid, uint64_t address) {
  std::string text;
  for (std::string piece; !(piece = memory_of(pid, address + text.size(), 1)).empty();) {
    if (piece[0] == '\0') break;
    text += piece;
  }
  return text;
}

std::string folder_of(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool is_one_of(long number, std::initializer_list<long> numbers) {
  for (const long one : numbers)
    if (one == number) return true;
  return false;
}

#ifdef SYS_ftruncate64
constexpr long kTruncateCall = SYS_ftruncate64;
#else
constexpr long kTruncateCall = SYS_ftruncate;
#endif

}  // namespace

std::string DiskLog::path_at(const CallMade& call, int argument) const {
  return text_of(call.pid, call.arguments[argument]);
}

std::string DiskLog::identity(const std::string& path) {
  const auto known = identities_.find(path);
  return known == identities_.end() ? path : known->second;
}

void DiskLog::opened(const CallMade& call, const std::string& path, uint64_t flags) {
  if (!inside(path)) return;
  const auto key = std::pair(call.pid, static_cast<int>(call.result));
  positions_[key] = 0;
  if (flags & O_DIRECTORY) {
    open_[key] = path;
    return;
  }
  if ((flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL)) {
    identities_[path] = "#" + std::to_string(++made_);
    events_.push_back({DiskEvent::kMake, path, identities_[path]});
  }
  open_[key] = identity(path);
  if (flags & O_TRUNC) events_.push_back({DiskEvent::kTruncate, open_[key], ""});
}

void DiskLog::renamed(const std::string& from, const std::string& to) {
  events_.push_back({DiskEvent::kRename, from, to});
  identities_[to] = identity(from);
  identities_.erase(from);
}

void DiskLog::watch(const CallMade& call) {
  if (call.result < 0) return;
  const auto key = std::pair(call.pid, static_cast<int>(call.arguments[0]));
  const bool known = open_.count(key) > 0;
  if (call.number == SYS_openat) {
    opened(call, path_at(call, 1), call.arguments[2]);
  } else if (call.number == SYS_open) {
    opened(call, path_at(call, 0), call.arguments[1]);
  } else if (call.number == SYS_write && known) {
    const auto size = static_cast<size_t>(call.result);
    events_.push_back({DiskEvent::kWrite, open_[key], "", positions_[key],
                       memory_of(call.pid, call.arguments[1], size)});
    positions_[key] += size;
  } else if (is_one_of(call.number, {kTruncateCall, SYS_ftruncate}) && known) {
    events_.push_back(
        {DiskEvent::kTruncate, open_[key], "", static_cast<size_t>(call.arguments[1])});
  } else if (is_one_of(call.number, {SYS_fsync, SYS_fdatasync}) && known) {
    const bool folder = fs::is_directory(open_[key]);
    events_.push_back({folder ? DiskEvent::kSyncFolder : DiskEvent::kSync, open_[key], ""});
  } else if (call.number == SYS_rename) {
    renamed(path_at(call, 0), path_at(call, 1));
  } else if (is_one_of(call.number, {SYS_unlink, SYS_rmdir})) {
    const std::string path = path_at(call, 0);
    if (inside(path)) events_.push_back({DiskEvent::kRemove, path, ""});
    identities_.erase(path);
  } else if (call.number == SYS_mkdir) {
    const std::string path = path_at(call, 0);
    if (inside(path)) events_.push_back({DiskEvent::kMakeFolder, path, ""});
  } else if (call.number == SYS_close) {
    open_.erase(key);
  }
}

Disk Disk::read(const std::string& root) {
  Disk disk;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_directory())
      disk.folders.insert(entry.path());
    else
      disk.files[entry.path()] = file_content(entry.path());
  }
  return disk;
}

void Disk::write(const std::string& root) const {
  for (const auto& entry : fs::directory_iterator(root)) remove_tree(entry.path());
  for (const std::string& folder : folders) make_directories(folder);
  for (const auto& [path, content] : files) put_file(path, content);
}

namespace {

enum class Fate { kLost, kThere, kHalf, kZeros };

bool is_sync(const DiskEvent& event) {
  return event.kind == DiskEvent::kSync || event.kind == DiskEvent::kSyncFolder;
}

bool is_content(const DiskEvent& event) {
  return event.kind == DiskEvent::kWrite || event.kind == DiskEvent::kTruncate;
}

// Whether this sync puts that event on disk.
bool covers(const DiskEvent& sync, const DiskEvent& event) {
  if (is_content(event)) return sync.kind == DiskEvent::kSync && sync.path == event.path;
  if (sync.kind != DiskEvent::kSyncFolder) return false;
  return sync.path == folder_of(event.kind == DiskEvent::kRename ? event.other : event.path);
}

// The disk while it is put together: names lead to files, and files have contents.
struct Names {
  std::map<std::string, std::string> files;     // name to identity
  std::map<std::string, std::string> contents;  // by identity
  std::set<std::string> folders;

  explicit Names(const Disk& disk) : folders(disk.folders) {
    for (const auto& [path, content] : disk.files) {
      files[path] = path;
      contents[path] = content;
    }
  }

  bool reachable(const std::string& path) const {
    const std::string folder = folder_of(path);
    return folder == "/etc/config" || folders.count(folder) > 0;
  }

  void remove(const std::string& path) {
    files.erase(path);
    const std::string below = path + "/";
    std::erase_if(files, [&](const auto& file) { return file.first.rfind(below, 0) == 0; });
    std::erase_if(folders, [&](const std::string& folder) {
      return folder == path || folder.rfind(below, 0) == 0;
    });
  }

  void apply(const DiskEvent& event, Fate fate) {
    std::string& content = contents[event.path];
    if (event.kind == DiskEvent::kMake && reachable(event.path)) files[event.path] = event.other;
    if (event.kind == DiskEvent::kMakeFolder && reachable(event.path)) folders.insert(event.path);
    if (event.kind == DiskEvent::kRemove) remove(event.path);
    if (event.kind == DiskEvent::kTruncate) content.resize(event.at);
    if (event.kind == DiskEvent::kWrite) {
      const size_t length = fate == Fate::kHalf ? event.data.size() / 2 : event.data.size();
      content.resize(std::max(content.size(), event.at + length));
      content.replace(
          event.at, length,
          fate == Fate::kZeros ? std::string(length, '\0') : event.data.substr(0, length));
    }
  }

  // A name that was never put on disk can still be the first that its file gets there.
  void rename(const DiskEvent& event, const std::string& identity) {
    if (reachable(event.other)) files[event.other] = identity;
    files.erase(event.path);
  }

  Disk disk() const {
    Disk result;
    result.folders = folders;
    for (const auto& [path, identity] : files) {
      const auto content = contents.find(identity);
      result.files[path] = content == contents.end() ? "" : content->second;
    }
    return result;
  }
};

Disk put_together(const Disk& before, const std::vector<DiskEvent>& events,
                  const std::vector<Fate>& fates) {
  Names names(before), all(before);  // `all` knows what each name led to when it was renamed
  for (size_t i = 0; i < fates.size(); ++i) {
    if (is_sync(events[i])) continue;
    if (events[i].kind == DiskEvent::kRename) {
      const std::string identity = all.files[events[i].path];
      all.rename(events[i], identity);
      if (fates[i] != Fate::kLost) names.rename(events[i], identity);
      continue;
    }
    all.apply(events[i], Fate::kThere);
    if (fates[i] != Fate::kLost) names.apply(events[i], fates[i]);
  }
  return names.disk();
}

// Goes through all fates of what was not synced, from the last event to the first.
void each_fate(const Disk& before, const std::vector<DiskEvent>& events, std::vector<Fate>& fates,
               const std::vector<size_t>& open, size_t at, std::set<Disk>& found) {
  if (at == open.size()) {
    found.insert(put_together(before, events, fates));
    return;
  }
  const bool content = events[open[at]].kind == DiskEvent::kWrite;
  for (const Fate fate : {Fate::kLost, Fate::kThere, Fate::kHalf, Fate::kZeros}) {
    if (!content && fate > Fate::kThere) break;
    fates[open[at]] = fate;
    each_fate(before, events, fates, open, at + 1, found);
  }
}

}  // namespace

std::set<Disk> after_a_cut(const Disk& before, const std::vector<DiskEvent>& events, size_t count) {
  std::vector<Fate> fates(count, Fate::kThere);
  std::vector<size_t> open;
  for (size_t i = 0; i < count; ++i) {
    bool synced = is_sync(events[i]);
    for (size_t j = i + 1; j < count && !synced; ++j) synced = covers(events[j], events[i]);
    if (!synced) open.push_back(i);
  }
  std::set<Disk> found;
  each_fate(before, events, fates, open, 0, found);
  return found;
}

}  // namespace fairlead_test
