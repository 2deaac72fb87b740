// A rule's value that is text: letters, wildcards, and dashes that stand for one another.
//
// `*` matches any number of characters, `?` exactly one; a backslash makes them ordinary. A
// character is a code point of UTF-8. A pattern matches a whole text unless it begins or ends with
// `*`. Matching takes at most time in proportion to text times pattern, and never backtracks.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::sigma {

class text_pattern {
 public:
  // One step of a pattern between two `*`.
  struct unit {
    enum class kind : unsigned char { literal, any_character, dash };
    kind what = kind::literal;
    std::string text;  // of a literal; never empty
    bool operator==(const unit&) const = default;
  };
  using piece = std::vector<unit>;

  text_pattern() = default;
  // Reads a rule's value with its wildcards and escapes: `\*` and `\?` are ordinary characters,
  // `\\` is one backslash, and any other backslash is itself.
  static text_pattern parse(std::string_view value);
  // All of `text`, literally.
  static text_pattern plain(std::string_view text);

  // The effect of a field's modifiers on its pattern.
  void open_start();  // as if `*` stood in front
  void open_end();    // as if `*` stood behind
  void any_dash();    // hyphen, slash, en dash, em dash and horizontal bar stand for one another
  void fold();        // matches texts that were folded (fold_case.h)
  void add(const text_pattern& more);  // `more` follows at once

  // Whether the pattern is a single literal, open at either end or not; that literal.
  bool is_simple() const;
  std::string_view simple_text() const;
  bool opens_start() const { return pieces_.size() > 1 && pieces_.front().empty(); }
  bool opens_end() const { return pieces_.size() > 1 && pieces_.back().empty(); }
  // The longest literal in every matching text, empty if there is none.
  std::string_view longest_literal() const;
  // Every text that the pattern matches if it has dashes but no wildcards; nothing if it has
  // wildcards or matches more than `limit` texts.
  std::optional<std::vector<std::string>> texts(std::size_t limit) const;

  // Number of wildcards and dashes, which make matching slow.
  std::size_t costly_units() const;

  bool matches(std::string_view text) const;
  // The same for equal patterns only, to find tests that several rules share.
  std::string key() const;

 private:
  void append_unit(unit::kind what, std::string_view text);
  void append_wildcard();  // `*`

  // The parts between two `*`; never empty. The first and the last part are empty if the pattern
  // begins or ends with `*`, no other one is.
  std::vector<piece> pieces_{1};
};

}  // namespace zanvik::sigma
