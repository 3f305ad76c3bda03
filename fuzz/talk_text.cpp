// The text of a document: there and back, its copy, its listing.
#include <unistd.h>

#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::document;
using fuzzing::text_of;

constexpr size_t kLongestLine = 4000;  // listings cut theirs a little later

std::string listing(talk_t* talk) {
  char* text = nullptr;
  size_t size = 0;
  FILE* const former = stdout;
  stdout = open_memstream(&text, &size);
  TalkPrint(talk);
  fclose(stdout);
  stdout = former;
  return fuzzing::owned_string(text);
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const OwnedTalk talk = document(input.rest());
  if (!talk) return;
  const std::string text = text_of(talk.get());
  REQUIRE(TalkEqual(talk.get(), talk.get()) == 1);
  REQUIRE((VesselCheck(talk.get()) == 1) != (RenderCheck(talk.get()) == 1));

  // A string keeps leading white space away, and what it is then is what it stays.
  const OwnedTalk again = document(text);
  REQUIRE(again && text_of(again.get()) == text);

  const OwnedTalk copy(TalkDup(talk.get()));
  REQUIRE(copy);
  const OwnedTalk second(TalkDup(copy.get()));
  REQUIRE(text_of(second.get()) == text_of(copy.get()));
  REQUIRE(TalkEqual(copy.get(), second.get()) == TalkEqual(second.get(), copy.get()));

  const bool listed_whole = text_of(copy.get()) == text && text.size() < kLongestLine;
  if (!VesselCheck(talk.get()) || !listed_whole) return;
  REQUIRE(text_of(document(listing(talk.get())).get()) == text);
}
