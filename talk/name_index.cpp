// Finding members by name: a walk over small objects, a hash table over large ones.
#include "talk/name_index.h"

#include <sys/random.h>

#include <cstring>
#include <utility>

#include "base/errno_keeper.h"
#include "talk/json/node.h"
#include "talk/roles.h"

namespace {

// Up to here a walk is quicker than a table.
constexpr size_t kSmall = 16;
// So many steps beyond may be walked before a table pays: a table costs several steps per member.
constexpr size_t kPatience = 4096;
constexpr uint32_t kMostEntries = uint32_t{1} << 30;

using fairlead::named_as;

// The first member of that name among the first few; `rest` is what follows those, if it is not.
json_t* find_early(const json_t* vessel, const json_t& wanted, json_t*& rest) {
  json_t* member = vessel->child;
  for (size_t i = 0; member && i < kSmall; ++i, member = member->next)
    if (named_as(member, wanted)) return member;
  rest = member;
  return nullptr;
}

size_t count_members(const json_t* vessel) {
  size_t count = 0;
  for (const json_t* member = vessel->child; member; member = member->next) ++count;
  return count;
}

}  // namespace

json_t* fairlead::NameIndex::find(const json_t* vessel, const json_t& wanted) {
  json_t* rest = nullptr;
  json_t* const early = find_early(vessel, wanted, rest);
  return rest ? find_late(vessel, rest, wanted) : early;
}

json_t* fairlead::NameIndex::find(const json_t* vessel, const json_t& wanted, InStep& beside) {
  if (!kByWords) return find(vessel, wanted);
  if (json_t* const next = beside.find(wanted)) return next;
  json_t* rest = nullptr;
  json_t* const early = find_early(vessel, wanted, rest);
  if (!rest) return early;
  if (rest == beside.next() && beside.begin_to_count())
    if (json_t* const next = beside.find(wanted)) return next;
  return find_late(vessel, rest, wanted);
}

// Goes on where the first few members did not have the name.
json_t* fairlead::NameIndex::find_late(const json_t* vessel, json_t* member, const json_t& wanted) {
  if (holds(vessel) || (steps_ > kPatience && enter(vessel)))
    return entries()[*link_to(vessel, wanted.text)].member;
  for (; member && !named_as(member, wanted); member = member->next) ++steps_;
  return member;
}

void fairlead::NameIndex::appended(json_t* member) {
  if (!holds(member->parent)) return;
  if (reserve(1)) put(member->parent, member);
}

void fairlead::NameIndex::removing(const json_t* member) {
  if (!holds(member->parent)) return;
  uint32_t* link = link_to(member->parent, member->text);
  Entry& entry = entries()[*link];
  *link = entry.next;
  entry.vessel = nullptr;
}

void fairlead::NameIndex::give_up() {
  block_.reset();
  capacity_ = count_ = 0;
  given_up_ = true;
}

bool fairlead::NameIndex::enter(const json_t* vessel) {
  if (!reserve(count_members(vessel) + 1)) return false;

  // From the last member to the first: the one entered last is found first, as the first namesake
  // must be.
  for (json_t* member = vessel->child_end; member; member = member->previous)
    if (name_of(member)) put(vessel, member);
  put(vessel, nullptr);
  return true;
}

// Room for more entries. False when there is no memory; the table is gone then, since one that
// missed a member would give wrong answers.
bool fairlead::NameIndex::reserve(size_t entries_more) {
  if (given_up_) return false;
  const size_t needed = 1 + count_ + entries_more;  // entry 0 stays empty: it ends the chains
  if (needed <= capacity_) return true;
  ErrnoKeeper keep;
  size_t capacity = capacity_ ? capacity_ : 64;
  while (capacity < needed && capacity < kMostEntries) capacity *= 2;
  Owned<Entry> block;
  if (needed <= capacity)
    block.reset(static_cast<Entry*>(calloc(capacity, sizeof(Entry) + sizeof(uint32_t))));
  if (!block) {
    give_up();
    return false;
  }
  if (count_ == 0) getrandom(&key_, sizeof key_, GRND_NONBLOCK);  // left as it is, it still works
  if (count_ > 0) memcpy(block.get() + 1, entries() + 1, count_ * sizeof(Entry));
  block_ = std::move(block);
  capacity_ = static_cast<uint32_t>(capacity);
  for (uint32_t number = 1; number <= count_; ++number) chain(number);
  return true;
}

void fairlead::NameIndex::put(const json_t* vessel, json_t* member) {
  const uint32_t hash = hash_of(vessel, member ? member->text : nullptr);
  entries()[++count_] = {vessel, member, hash, 0};
  chain(count_);
}

void fairlead::NameIndex::chain(uint32_t number) {
  Entry& entry = entries()[number];
  uint32_t& first = buckets()[entry.hash & (capacity_ - 1)];
  entry.next = first;
  first = number;
}

uint32_t fairlead::NameIndex::hash_of(const json_t* vessel, const char* name) const {
  const auto address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(vessel) >> 4);
  const uint32_t mixed = address * 2654435761u;
  return name ? mixed ^ NameHash(key_).of(name) : mixed;
}

// What names the first entry of that name in the vessel, or with a null name the vessel's own; 0 is
// there when there is none.
uint32_t* fairlead::NameIndex::link_to(const json_t* vessel, const char* name) const {
  const uint32_t hash = hash_of(vessel, name);
  uint32_t* link = &buckets()[hash & (capacity_ - 1)];
  for (; *link != 0; link = &entries()[*link].next) {
    const Entry& entry = entries()[*link];
    if (entry.hash != hash || entry.vessel != vessel || !entry.member != !name) continue;
    if (!name || strcmp(entry.member->text, name) == 0) break;
  }
  return link;
}
