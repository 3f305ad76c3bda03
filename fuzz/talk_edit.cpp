// Two documents, a line each: merging, pruning, copying and comparing equal a plain model. A third
// line is a path, where a value is put, read and removed.
#include "fairlead/uii.h"
#include "fuzzing.h"
#include "tree_model.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::document;
using fuzzing::Tree;
using fuzzing::tree_of;

void check_whole(talk_t* source, talk_t* target) {
  Tree from = tree_of(source), to = tree_of(target);
  REQUIRE(TalkEqual(source, target) == equal(from, to));
  REQUIRE(TalkEqual(target, source) == equal(to, from));

  const OwnedTalk copy(VesselDup(target));
  REQUIRE(text_of(tree_of(copy.get())) == text_of(copied(to)));

  Tree rest = copied(to);
  REQUIRE(VesselDeleteRule(source, copy.get()) == prune(from, rest));
  REQUIRE(text_of(tree_of(copy.get())) == text_of(rest));

  REQUIRE(VesselModify(source, target) == merge(from, to));
  REQUIRE(text_of(tree_of(target)) == text_of(to));
  REQUIRE(text_of(tree_of(source)) == text_of(from));
}

void check_path(talk_t* document, const std::string& path) {
  fuzzing::ExactText text(path);
  slash_t slash = {};
  const bool named = SlashAnalysis(&slash, text.get()) == 1;
  const bool set = TalkUiiSetS(document, "value", &slash, nullptr) == 1;
  REQUIRE(set == named);
  if (set) {
    char buffer[16];
    REQUIRE(TalkUiiGetS(document, buffer, sizeof buffer, &slash, nullptr));
    REQUIRE(std::string(buffer) == "value");
    REQUIRE(TalkUiiSet(document, nullptr, &slash, nullptr) == 1);
  }
  SlashClear(&slash);
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const OwnedTalk source = document(input.line());
  const OwnedTalk target = document(input.line());
  if (!source || !target || !VesselCheck(source.get()) || !VesselCheck(target.get())) return;
  check_whole(source.get(), target.get());
  check_path(target.get(), input.line());
}
