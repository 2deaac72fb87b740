// A value of a rule that is text: letters, wildcards, and dashes that stand for one another.
//
// `*` takes any number of characters, `?` exactly one; a backslash takes their meaning away. A
// character is a code point of UTF-8. A pattern matches a whole text unless it begins or ends with
// `*`. Matching takes time in proportion to text times pattern at worst, and never goes back.
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
  // Reads a rule's value with its wildcards and escapes: `\*` and `\?` are plain characters, `\\`
  // is one backslash, and any other backslash is itself.
  static text_pattern parse(std::string_view value);
  // All of `text` as it stands.
  static text_pattern plain(std::string_view text);

  // What the modifiers of a field do to its pattern.
  void open_start();  // as if `*` stood in front
  void open_end();    // as if `*` stood behind
  void any_dash();    // hyphen, slash, en dash, em dash and horizontal bar stand for one another
  void fold();        // matches texts that were folded (fold_case.h)
  void add(const text_pattern& more);  // `more` follows at once

  // Whether the pattern is one literal, but for what is open at either end; that literal.
  bool is_simple() const;
  std::string_view simple_text() const;
  bool opens_start() const { return pieces_.size() > 1 && pieces_.front().empty(); }
  bool opens_end() const { return pieces_.size() > 1 && pieces_.back().empty(); }
  // The longest literal that every matching text has, empty when there is none.
  std::string_view longest_literal() const;
  // Every text that the pattern stands for when it has dashes but no wildcards; nothing when it
  // has wildcards or when the texts are more than `limit`.
  std::optional<std::vector<std::string>> texts(std::size_t limit) const;

  // Wildcards and dashes, which make matching take its time.
  std::size_t costly_units() const;

  bool matches(std::string_view text) const;
  // The same for the same pattern only; for finding what several rules ask.
  std::string key() const;

 private:
  void append_unit(unit::kind what, std::string_view text);
  void append_wildcard();  // `*`

  // What stands between two `*`; never empty. The first and the last piece are empty where the
  // pattern begins or ends with `*`, no other one is.
  std::vector<piece> pieces_{1};
};

}  // namespace zanvik::sigma
