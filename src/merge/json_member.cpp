#include "merge/json_member.h"

#include <cstddef>

namespace zanvik {
namespace {

// A place in the text; at its end everything fails.
class json_place {
 public:
  explicit json_place(std::string_view text) : text_(text) {}

  bool at(char c) const { return at_ < text_.size() && text_[at_] == c; }
  bool take(char c) {
    if (!at(c)) return false;
    ++at_;
    return true;
  }
  // A string in its quotes; `out` is what stands between them.
  bool take_string(std::string_view& out) {
    if (!take('"')) return false;
    const std::size_t begin = at_;
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    if (!at('"')) return false;
    out = text_.substr(begin, at_ - begin);
    ++at_;
    return true;
  }
  // Any value: what brackets enclose, or what comes up to a comma or bracket.
  bool skip_value() {
    std::size_t depth = 0;
    std::string_view ignored;
    for (; at_ < text_.size();) {
      const char c = text_[at_];
      if (c == '"') {
        if (!take_string(ignored)) return false;
      } else if (c == '{' || c == '[') {
        ++depth;
        ++at_;
      } else if (c == '}' || c == ']') {
        if (depth == 0) return true;
        --depth;
        ++at_;
      } else if (c == ',' && depth == 0) {
        return true;
      } else {
        ++at_;
      }
    }
    return false;
  }
  // From before an object to the value of its member.
  bool enter(std::string_view member) {
    if (!take('{')) return false;
    std::string_view name;
    while (take_string(name) && take(':')) {
      if (name == member) return true;
      if (!skip_value() || !take(',')) return false;
    }
    return false;
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

std::string_view json_text_at(std::string_view json,
                              std::initializer_list<std::string_view> names) {
  json_place place(json);
  std::string_view text;
  for (const std::string_view name : names) {
    if (!place.enter(name)) return {};
  }
  return place.take_string(text) ? text : std::string_view();
}

}  // namespace zanvik
