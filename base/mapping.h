// A shared mapping of a whole file, until the end of the block.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <utility>

#include "base/errno_keeper.h"

namespace fairlead {

class Mapping {
 public:
  Mapping() = default;
  Mapping(int fd, size_t size, int protection)
      : address_(mmap(nullptr, size, protection, MAP_SHARED, fd, 0)), size_(size) {}
  Mapping(Mapping&& other) noexcept : size_(other.size_) { address_ = other.release(); }
  Mapping& operator=(Mapping&& other) noexcept {
    std::swap(address_, other.address_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~Mapping() {
    ErrnoKeeper keep;
    if (*this) munmap(address_, size_);
  }

  explicit operator bool() const { return address_ != MAP_FAILED; }
  void* address() const { return address_; }
  size_t size() const { return size_; }
  void* release() { return std::exchange(address_, MAP_FAILED); }

 private:
  void* address_ = MAP_FAILED;
  size_t size_ = 0;
};

}  // namespace fairlead
