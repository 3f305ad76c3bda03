// A value store of any bytes: what it tells lies inside of the file, and what is set is there.
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "fairlead/state.h"
#include "fuzzing.h"

// The library's pauses in front of a file that is taken for unfinished: nobody is going to finish
// it.
extern "C" int nanosleep(const timespec*, timespec*) { return 0; }

namespace {

using fairlead::OwnedTalk;

constexpr char kFile[] = "/tmp/.var/gvalue/fuzzed";

// What is mapped, since nobody else changes the file.
size_t size_of(const gvalue_t* gvalue) {
  struct stat status;
  REQUIRE(fstat(gvalue->fd, &status) == 0);
  return static_cast<size_t>(status.st_size);
}

// The library closes no handle.
struct Closer {
  void operator()(gvalue_t* gvalue) const {
    REQUIRE(munmap(gvalue->address, size_of(gvalue)) == 0);
    close(gvalue->fd);
    free(gvalue);
  }
};
using Store = std::unique_ptr<gvalue_t, Closer>;

bool inside(const gvalue_t* store, const void* value, int size) {
  const auto* const begin = static_cast<const char*>(store->address);
  const auto* const at = static_cast<const char*>(value);
  return at >= begin && at + size <= begin + size_of(store);
}

void read_all(gvalue_t* store) {
  const OwnedTalk list(GvalueList(store));
  if (!list) return;
  for (axp_t* member = VesselEach(list.get(), nullptr); member;
       member = VesselEach(list.get(), member)) {
    const char* const name = AxpGet(member);
    const int size = GvalueSize(store, name);
    const void* const value = GvalueGet(store, name);
    REQUIRE((size >= 0) == (value != nullptr));
    if (value) REQUIRE(inside(store, value, size));
  }
}

// Refused, or there whatever the file held: twice, for the second one takes the place of the first.
void set(gvalue_t* store, const std::string& name, const std::string& value) {
  const int size = static_cast<int>(value.size());
  if (GvalueSet(store, name.c_str(), value.data(), size) != 1) return;
  REQUIRE(GvalueSize(store, name.c_str()) >= size);
  const void* const place = GvalueGet(store, name.c_str());
  REQUIRE(place && inside(store, place, size) && memcmp(place, value.data(), value.size()) == 0);
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string name = ExactText(input.line()).get();
  const std::string value = input.take(input.byte() + 1);
  unlink(kFile);
  put_file(kFile, input.rest());

  const Store store(GvalueCreate("fuzzed"));
  if (!store) {
    REQUIRE(access(kFile, F_OK) != 0);
    return;
  }
  read_all(store.get());
  if (!value.empty()) {
    set(store.get(), name, value);
    set(store.get(), name, std::string(value.size(), 'x'));
  }
  read_all(store.get());
}
