// Answers as JSON, lines or tables.
#include "tools/fairlead/output.h"

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "base/bounded_text.h"
#include "base/owned.h"
#include "fairlead/talk/text.h"
#include "talk/owned_talk.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

using fairlead::OwnedTalk;
using fairlead::OwnedText;

constexpr int kGap = 2;

// What JSON asks for and no more: json_escape escapes slashes too, and paths would be hard to read.
OwnedText escape(const char* text) {
  const size_t size = 6 * strlen(text) + 1;
  OwnedText room(static_cast<char*>(malloc(size)));
  if (!room) return room;
  fairlead::BoundedText escaped(room.get(), size);
  for (; *text; ++text) {
    const auto byte = static_cast<unsigned char>(*text);
    if (byte == '\n')
      escaped.add("\\n");
    else if (byte < 0x20)
      escaped.format("\\u%04x", byte);
    else if (byte == '"' || byte == '\\')
      escaped.add('\\').add(*text);
    else
      escaped.add(*text);
  }
  return room;
}

// Deeper objects stand on one line as JSON, so that no document exhausts the stack.
constexpr int kDeepest = 8;

bool on_terminal() { return isatty(STDOUT_FILENO) == 1; }

Exit print_json(talk_t* document) {
  char* written = nullptr;
  if (json_tree_to_string(document, &written) != JSON_DONE)
    return fail("the answer cannot be printed: a member has no value");
  const OwnedText text(written);
  puts(text.get());
  return kDone;
}

// Calls line(path, value) for every value of the object.
template <class Line>
void each_value(vessel_t* object, const char* above, int depth, Line line) {
  for (axp_t* member = object->child; member; member = member->next) {
    fairlead::FixedText<1024> path;
    path.add(above).add(*above ? "/" : "").add(member->text ? member->text : "");
    talk_t* value = member->child;
    if (value && RenderCheck(value)) {
      line(path, RenderString(value));
    } else if (value && VesselCheck(value) && value->child && depth < kDeepest) {
      each_value(value, path.text(), depth + 1, line);
    } else if (value) {
      char* written = nullptr;
      if (json_tree_to_string(value, &written) != JSON_DONE) continue;
      const OwnedText text(written);
      line(path, text.get());
    }
  }
}

void print_cell(const char* text, size_t width, bool last) {
  if (last)
    printf("%s\n", text);
  else if (on_terminal())
    printf("%-*s", static_cast<int>(width) + kGap, text);
  else
    printf("%s\t", text);
}

// A column's text in a row, "-" where there is none: an empty cell would shift the others.
const char* cell(talk_t* row, const char* column) {
  talk_t* value = row && VesselCheck(row) ? VesselGetX(row, column) : nullptr;
  const char* text = value && RenderCheck(value) ? RenderString(value) : nullptr;
  return text && *text ? text : "-";
}

// A table whose widths are measured before its first line.
class Table {
 public:
  Table(talk_t* document, const char* name_title, std::span<const char* const> columns)
      : document_(document),
        name_title_(name_title),
        columns_(columns.first(std::min(columns.size(), kMost))) {
    name_width_ = strlen(name_title);
    for (size_t i = 0; i < columns_.size(); ++i) widths_[i] = strlen(columns_[i]);
    for (axp_t* row = document->child; row; row = row->next) measure(row);
  }

  void print() const {
    if (on_terminal()) {
      print_cell(name_title_, name_width_, false);
      for (size_t i = 0; i < columns_.size(); ++i) print_cell(columns_[i], widths_[i], is_last(i));
    }
    for (axp_t* row = document_->child; row; row = row->next) {
      print_cell(row->text, name_width_, false);
      for (size_t i = 0; i < columns_.size(); ++i)
        print_cell(cell(row->child, columns_[i]), widths_[i], is_last(i));
    }
  }

 private:
  static constexpr size_t kMost = 8;

  bool is_last(size_t column) const { return column + 1 == columns_.size(); }

  void measure(axp_t* row) {
    name_width_ = std::max(name_width_, strlen(row->text));
    for (size_t i = 0; i < columns_.size(); ++i)
      widths_[i] = std::max(widths_[i], strlen(cell(row->child, columns_[i])));
  }

  talk_t* document_;
  const char* name_title_;
  std::span<const char* const> columns_;
  size_t name_width_;
  size_t widths_[kMost] = {};
};

}  // namespace

Exit done(const Call& call) {
  if (call.options.json) puts(R"({"result":"done"})");
  return kDone;
}

bool add_text(vessel_t* document, const char* name, const char* text) {
  const OwnedText escaped_name = escape(name);
  const OwnedText escaped = escape(text);
  if (!escaped_name || !escaped) return false;
  OwnedTalk value(json_new_string(escaped.get()));
  if (!value ||
      json_insert_pair_into_object(document, escaped_name.get(), value.get()) != JSON_DONE)
    return false;
  (void)value.release();  // the document's now
  return true;
}

Exit show_text(const Call& call, const char* name, const char* text) {
  if (!call.options.json) {
    puts(text);
    return kDone;
  }
  const OwnedTalk document(VesselCreate());
  if (!document || !add_text(document.get(), name, text)) return fail("out of memory");
  return print_json(document.get());
}

Exit show_number(const Call& call, const char* name, int64_t number) {
  fairlead::FixedText<32> text;
  return show_text(call, name, text.format("%" PRId64, number).text());
}

Exit show(const Call& call, talk_t* document) {
  if (call.options.json) return print_json(document);
  if (RenderCheck(document)) {
    puts(RenderString(document));
    return kDone;
  }
  if (!VesselCheck(document)) return print_json(document);
  size_t width = 0;
  each_value(document, "", 0,
             [&](const auto& path, const char*) { width = std::max(width, path.length()); });
  each_value(document, "", 0, [&](const auto& path, const char* value) {
    print_cell(path.text(), width, false);
    print_cell(value, 0, true);
  });
  return kDone;
}

Exit show_table(const Call& call, talk_t* document, const char* name_title,
                std::span<const char* const> columns) {
  if (call.options.json) return print_json(document);
  Table(document, name_title, columns).print();
  return kDone;
}

}  // namespace control
