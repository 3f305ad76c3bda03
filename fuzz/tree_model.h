// Documents as plain trees, and what the library does to them said in the plainest way: the model
// that the real thing is compared with.
#pragma once

#include <string>
#include <vector>

#include "fairlead/talk.h"
#include "fuzzing.h"

namespace fuzzing {

struct Member;

struct Tree {
  enum Kind { kString, kObject, kOther };

  Kind kind = kObject;
  std::string text;  // of a string, or the whole text of what is neither
  std::vector<Member> members;

  Tree* first(const std::string& name);
};

struct Member {
  std::string name;
  Tree value;
};

inline Tree* Tree::first(const std::string& name) {
  for (Member& member : members)
    if (member.name == name) return &member.value;
  return nullptr;
}

inline Tree tree_of(talk_t* talk) {
  if (RenderCheck(talk)) return {Tree::kString, RenderString(talk), {}};
  if (!VesselCheck(talk)) {
    char* text = nullptr;
    REQUIRE(json_tree_to_string(talk, &text) == JSON_DONE);
    return {Tree::kOther, owned_string(text), {}};
  }
  Tree tree;
  for (axp_t* member = VesselEach(talk, nullptr); member; member = VesselEach(talk, member))
    tree.members.push_back({AxpGet(member), tree_of(AxpGetX(member))});
  return tree;
}

inline std::string text_of(const Tree& tree) {
  if (tree.kind == Tree::kString) return '"' + tree.text + '"';
  if (tree.kind == Tree::kOther) return tree.text;
  std::string text = "{";
  for (const Member& member : tree.members) {
    if (text.size() > 1) text += ',';
    text += '"' + member.name + "\":" + text_of(member.value);
  }
  return text + '}';
}

int merge(const Tree& source, Tree& target);

inline int merge_value(const Tree& source, Tree& target) {
  if (source.kind == Tree::kOther) return 0;
  if (source.kind == Tree::kString) {
    target = source;
    return 1;
  }
  const int replaced = target.kind != Tree::kObject;
  if (replaced) target = Tree();
  const int merged = merge(source, target);
  return merged ? merged : replaced;
}

inline int merge(const Tree& source, Tree& target) {
  int result = 0;
  for (const Member& member : source.members) {
    if (!target.first(member.name)) target.members.push_back({member.name, Tree()});
    if (const int merged = merge_value(member.value, *target.first(member.name))) result = merged;
  }
  return result;
}

inline int prune(const Tree& rule, Tree& target) {
  int result = 0;
  for (const auto& [name, value] : rule.members) {
    Tree* const found = target.first(name);
    if (!found) continue;
    if (value.kind == Tree::kObject && !value.members.empty()) {
      if (found->kind == Tree::kObject && prune(value, *found)) result = 1;
      continue;
    }
    for (auto member = target.members.begin(); member != target.members.end(); ++member) {
      if (&member->value != found) continue;
      target.members.erase(member);
      break;
    }
    result = 1;
  }
  return result;
}

inline Tree copied(const Tree& tree) {
  Tree copy = tree;
  copy.members.clear();
  for (const Member& member : tree.members)
    if (member.value.kind != Tree::kOther)
      copy.members.push_back({member.name, copied(member.value)});
  return copy;
}

// Of two different documents.
inline bool equal(Tree& a, Tree& b) {
  if (a.kind == Tree::kOther || b.kind != a.kind) return false;
  if (a.kind == Tree::kString) return a.text == b.text;
  const auto all_in = [](Tree& these, Tree& others) {
    for (Member& member : these.members) {
      Tree* const other = others.first(member.name);
      if (!other || !equal(member.value, *other)) return false;
    }
    return true;
  };
  return all_in(a, b) && all_in(b, a);
}

}  // namespace fuzzing
