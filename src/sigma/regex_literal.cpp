// What a regular expression certainly requires, found by walking its outermost sequence. Anything
// that is not clearly understood ends a literal or the whole search: an empty answer is always
// right, only slower.
#include <cctype>
#include <string_view>

#include "base/text.h"
#include "sigma/regex.h"

namespace zanvik::sigma {
namespace {

constexpr auto npos = std::string_view::npos;

// The position after the class that begins at `i`, npos if it has no end.
std::size_t class_end(std::string_view e, std::size_t i) {
  ++i;
  if (i < e.size() && e[i] == '^') ++i;
  if (i < e.size() && e[i] == ']') ++i;
  for (; i < e.size(); ++i) {
    if (e[i] == '\\') {
      ++i;
    } else if (e[i] == '[' && i + 1 < e.size() && (e[i + 1] == ':')) {
      i = e.find(":]", i + 2);
      if (i == npos) return npos;
      ++i;
    } else if (e[i] == ']') {
      return i + 1;
    }
  }
  return npos;
}

// The position after the group that begins at `i`, npos if it has no end.
std::size_t group_end(std::string_view e, std::size_t i) {
  std::size_t depth = 0;
  while (i < e.size()) {
    if (e[i] == '\\') {
      i += 2;
    } else if (e[i] == '[') {
      i = class_end(e, i);
      if (i == npos) return npos;
    } else {
      depth += e[i] == '(' ? 1 : 0;
      if (e[i++] == ')' && --depth == 0) return i;
    }
  }
  return npos;
}

struct repetition {
  std::size_t end;  // behind it; where it began when there is none
  bool may_be_none;
};

// The repetition of the item before `i`.
repetition repetition_at(std::string_view e, std::size_t i) {
  if (i >= e.size()) return {i, false};
  if (e[i] == '+') return {i + 1, false};
  if (e[i] == '?' || e[i] == '*') return {i + 1, true};
  if (e[i] != '{' || i + 1 == e.size()) return {i, false};
  const std::size_t end = e.find('}', i);
  if (end == npos || !std::isdigit(static_cast<unsigned char>(e[i + 1]))) return {i, false};
  std::size_t digit = i + 1;
  while (e[digit] == '0') ++digit;
  return {end + 1, !std::isdigit(static_cast<unsigned char>(e[digit]))};
}

class literal_walk {
 public:
  explicit literal_walk(std::string_view expression) : e_(expression) {}

  std::string longest() {
    // Quoted runs, comments, verbs and free spacing change what characters mean.
    for (const std::string_view odd : {"\\Q", "(*", "(?#", "\\K"}) {
      if (e_.find(odd) != npos) return {};
    }
    while (position_ < e_.size()) {
      if (!step()) return {};
    }
    end_run();
    return to_lower(best_);
  }

 private:
  void end_run() {
    if (run_.size() > best_.size()) best_ = run_;
    run_.clear();
  }

  // Reads one item with its repetition; false if nothing can be concluded.
  bool step() {
    const char c = e_[position_];
    std::string_view literal;
    std::size_t next = position_ + 1;
    if (c == '|' || c == ')') return false;
    if (c == '(') {
      if (!allowed_group()) return false;
      next = group_end(e_, position_);
    } else if (c == '[') {
      next = class_end(e_, position_);
    } else if (c == '\\') {
      if (next == e_.size()) return false;
      if (!std::isalnum(static_cast<unsigned char>(e_[next]))) {
        literal = e_.substr(next, 1);
      } else if (std::string_view("sSdDwWbBAzZhHvV").find(e_[next]) == npos) {
        return false;
      }
      ++next;
    } else if (c != '.' && c != '^' && c != '$') {
      // Other letters may have more cases than folding knows.
      if (static_cast<signed char>(c) > 0) literal = e_.substr(position_, 1);
    }
    if (next == npos) return false;
    return take(literal, next);
  }

  bool take(std::string_view literal, std::size_t next) {
    const repetition repeated = repetition_at(e_, next);
    position_ = repeated.end;
    if (literal.empty() || repeated.may_be_none) {
      end_run();
    } else {
      run_ += literal;
      if (repeated.end != next) end_run();
    }
    // `+?` and `++` repeat at least as much.
    if (repeated.end != next && position_ < e_.size() &&
        (e_[position_] == '?' || e_[position_] == '+')) {
      ++position_;
    }
    return true;
  }

  // Free spacing changes the meaning of blanks and #, also of what follows; and any group may turn
  // it on.
  bool allowed_group() const {
    if (position_ + 1 >= e_.size() || e_[position_ + 1] != '?') return true;
    for (std::size_t i = position_ + 2; i < e_.size(); ++i) {
      if (e_[i] == 'x') return false;
      if (!std::isalpha(static_cast<unsigned char>(e_[i])) && e_[i] != '-' && e_[i] != '^') break;
    }
    return true;
  }

  std::string_view e_;
  std::size_t position_ = 0;
  std::string run_, best_;
};

}  // namespace

std::string literal_of_regex(std::string_view expression) {
  return literal_walk(expression).longest();
}

}  // namespace zanvik::sigma
