// Stores for tests: opened and released, looked at from outside as a file.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fairlead/state/gvalue.h"
#include "fairlead/talk/node.h"
#include "state/gvalue_store.h"
#include "support/device_test.h"

namespace fairlead_test {

inline constexpr uint32_t kMagic = 0x53475600;

// Fields of the header, by their index among the 32-bit words of the file.
enum Field { kMagicField, kCapacity, kTableOffset, kCount, kDataSize, kDataOffset, kDataUsed };

inline std::string store_path(const std::string& name) { return "/tmp/.var/gvalue/" + name; }

inline uint32_t word_at(const std::string& content, size_t offset) {
  uint32_t word = 0;
  memcpy(&word, content.data() + offset, sizeof word);
  return word;
}

inline std::string words(const std::vector<uint32_t>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(uint32_t)};
}

// The file of a store with room for `capacity` records and their 256 bytes each.
inline std::string empty_store(uint32_t capacity = 100) {
  const uint32_t data = capacity * 256;
  std::string content = words({kMagic, capacity, 28, 0, data, capacity * 72 + 28, 0});
  content.resize(capacity * 72 + 28 + data);
  return content;
}

class GvalueTest : public DeviceTest {
 protected:
  // There is no function that closes a handle: they live until their process ends.
  void TearDown() override {
    for (gvalue_t* handle : opened_) {
      munmap(handle->address, static_cast<fairlead::OpenStore*>(handle)->mapped_size);
      close(handle->fd);
      free(handle);
    }
    DeviceTest::TearDown();
  }

  gvalue_t* track(gvalue_t* handle) {
    if (handle) opened_.push_back(handle);
    return handle;
  }

  gvalue_t* open(const char* name = "store", int capacity = 0, int data_size = 0) {
    return track(GvalueCreateDetails(name, capacity, data_size, 0660));
  }

  static int set(gvalue_t* handle, const std::string& name, const std::string& value) {
    return GvalueSet(handle, name.c_str(), value.data(), static_cast<int>(value.size()));
  }

  // The value with as many bytes as the store says, or "<none>".
  static std::string get(gvalue_t* handle, const std::string& name) {
    const void* address = GvalueGet(handle, name.c_str());
    const int size = GvalueSize(handle, name.c_str());
    if (!address || size < 0) return "<none>";
    return {static_cast<const char*>(address), static_cast<size_t>(size)};
  }

 private:
  std::vector<gvalue_t*> opened_;
};

}  // namespace fairlead_test
