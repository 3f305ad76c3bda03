// What the tests of talk nodes share: documents from text, and the two rules of errno.
#pragma once

#include <cerrno>
#include <string>

#include "fairlead/talk.h"
#include "json_support.h"
#include "talk/owned_talk.h"

namespace fairlead_test {

using fairlead::OwnedTalk;

inline OwnedTalk document(const std::string& text) { return OwnedTalk(parsed(text).release()); }

inline std::string text_of(const OwnedTalk& talk) { return text_of(talk.get()); }

// The names of an object's members in order, each ended by a blank, after checking every link.
inline std::string names_of(const talk_t* vessel) {
  std::string names;
  const talk_t* previous = nullptr;
  for (const talk_t* member = vessel->child; member; member = member->next) {
    EXPECT_EQ(vessel, member->parent);
    EXPECT_EQ(previous, member->previous);
    names += std::string(member->text) + ' ';
    previous = member;
  }
  EXPECT_EQ(previous, vessel->child_end);
  return names;
}

// Free-standing: belongs to whoever holds it.
inline void expect_unlinked(const talk_t* talk) {
  ASSERT_NE(nullptr, talk);
  EXPECT_EQ(nullptr, talk->parent);
  EXPECT_EQ(nullptr, talk->previous);
  EXPECT_EQ(nullptr, talk->next);
}

inline constexpr int kStaleErrno = 4711;

}  // namespace fairlead_test

// The call gives this result and sets errno to `code`, whatever errno was. It is made twice.
#define EXPECT_FAILS(code, result, call)                              \
  do                                                                  \
    for (int stale : {0, fairlead_test::kStaleErrno}) {               \
      errno = stale;                                                  \
      EXPECT_EQ(result, call) << "errno before: " << stale;           \
      EXPECT_EQ(code, errno) << #call << ", errno before: " << stale; \
    }                                                                 \
  while (false)

#define EXPECT_REFUSED(result, call) EXPECT_FAILS(EINVAL, result, call)

// The call gives this result and leaves errno alone. It is made twice.
#define EXPECT_ERRNO_KEPT(result, call)                     \
  do                                                        \
    for (int stale : {0, fairlead_test::kStaleErrno}) {     \
      errno = stale;                                        \
      EXPECT_EQ(result, call) << "errno before: " << stale; \
      EXPECT_EQ(stale, errno) << #call;                     \
    }                                                       \
  while (false)
