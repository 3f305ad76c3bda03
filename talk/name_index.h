// Finds members by name in time that does not depend on the size of their objects, for operations
// that look up many of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/owned.h"
#include "fairlead/talk/json.h"
#include "talk/in_step.h"
#include "talk/name_hash.h"

namespace fairlead {

// Small objects are walked, and so are large ones until the walking has taken longer than a table
// would. Then each large object that is asked for is entered into one hash table. Where there is no
// memory for it the walk goes on: the answers are the same.
//
// The table follows the objects it holds through `appended` and `removing`. An object that is freed
// may stay in the table, but no new object may get its address while the index lives.
class NameIndex {
 public:
  // The first member that is named as `wanted` is, which has a name; or null.
  json_t* find(const json_t* vessel, const json_t& wanted);

  // The same for an object that is walked in step with the one of `wanted`: a hundred thousand
  // members in the same order are found in a tenth of the time that the table takes.
  json_t* find(const json_t* vessel, const json_t& wanted, InStep& beside);

  // A member was appended to its object, which held none of its name.
  void appended(json_t* member);

  // A member, the first of its name, is about to leave its object.
  void removing(const json_t* member);

  // Some object is in the table.
  bool holds_objects() const { return count_ > 0; }

  // Forgets the table, and makes none again.
  void give_up();

 private:
  struct Entry {
    const json_t* vessel;  // null: the member was removed
    json_t* member;        // null: tells that the vessel is in the table
    uint32_t hash;
    uint32_t next;  // in the same bucket; 0 ends it
  };

  json_t* find_late(const json_t* vessel, json_t* member, const json_t& wanted);
  bool holds(const json_t* vessel) const {
    return holds_objects() && *link_to(vessel, nullptr) != 0;
  }
  bool enter(const json_t* vessel);
  bool reserve(size_t entries);
  void put(const json_t* vessel, json_t* member);
  void chain(uint32_t number);
  uint32_t hash_of(const json_t* vessel, const char* name) const;
  uint32_t* link_to(const json_t* vessel, const char* name) const;

  Entry* entries() const { return block_.get(); }  // 1 to count_ are in use
  uint32_t* buckets() const { return reinterpret_cast<uint32_t*>(block_.get() + capacity_); }

  Owned<Entry> block_;     // the entries, and behind them as many buckets
  uint32_t capacity_ = 0;  // a power of two
  uint32_t count_ = 0;
  size_t steps_ = 0;  // walked so far in large objects
  bool given_up_ = false;
  HashKey key_{};
};

}  // namespace fairlead
