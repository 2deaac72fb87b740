#include "base/text_split.h"

#include <cstdlib>

#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {
namespace {

// The separators of words if no other is given.
constexpr std::string_view word_breaks = " \t\n\v\f\r";

void keep_piece(std::string_view piece, std::vector<std::string>& out, bool trim, bool keep_empty) {
  if (trim) piece = trimmed(piece);
  if (keep_empty || !piece.empty()) out.emplace_back(piece);
}

// Joins the words between quotes, in place.
void join_quoted(std::vector<std::string>& words) {
  std::vector<std::string> items;
  bool quoted = false;
  for (auto& word : words) {
    const bool opens = !quoted && word.starts_with('"');
    if (opens) word.erase(0, 1);
    const bool closes = (opens || quoted) && word.ends_with('"');
    if (closes) word.pop_back();
    if (quoted) {
      items.back() += ' ';
      items.back() += word;
    } else {
      items.push_back(std::move(word));
    }
    quoted = (quoted || opens) && !closes;
  }
  words = std::move(items);
}

}  // namespace

bool split_on_char(std::string_view value, char separator, std::vector<std::string>& out, bool trim,
                   bool keep_empty, bool append) {
  if (!append) out.clear();
  if (value.empty()) return false;
  for (;;) {
    const auto cut = value.find(separator);
    keep_piece(value.substr(0, cut), out, trim, keep_empty);
    if (cut == std::string_view::npos) return true;
    value.remove_prefix(cut + 1);
  }
}

char split_on_first_of(std::string_view value, std::vector<std::string>& out, bool trim,
                       bool keep_empty, std::string_view separators) {
  out.clear();
  if (value.empty()) return 0;
  for (const char separator : separators) {
    if (value.find(separator) == std::string_view::npos) continue;
    split_on_char(value, separator, out, trim, keep_empty, false);
    return separator;
  }
  out.emplace_back(value);  // with its blanks: nothing was split
  return 0;
}

std::size_t split_on_blanks(std::string_view text, std::size_t limit, std::vector<std::string>& out,
                            bool honour_quotes) {
  out.clear();
  std::size_t from = 0;
  while (limit == 0 || out.size() < limit) {
    from = text.find_first_not_of(word_breaks, from);
    if (from == std::string_view::npos) break;
    const auto end = std::min(text.find_first_of(word_breaks, from), text.size());
    out.emplace_back(text.substr(from, end - from));
    from = end;
  }
  if (honour_quotes && out.size() > 1) join_quoted(out);
  return out.size();
}

bool parse_number_list(std::string_view value, std::vector<std::int64_t>& out, char separator) {
  out.clear();
  std::vector<std::string> items;
  if (separator == ' ') {
    split_on_blanks(value, 0, items, false);
  } else {
    split_on_char(value, separator, items, false, false, false);
  }
  for (const auto& item : items) {
    if (const auto number = number_from_text(trimmed(item))) out.push_back(*number);
  }
  return !out.empty();
}

std::size_t parse_hex_bytes(std::vector<std::uint8_t>& out, std::string_view value, char separator,
                            bool as_hex) {
  out.clear();
  std::vector<std::string> items;
  split_on_char(value, separator, items, false, false, false);
  for (const auto& item : items) {
    if (as_hex) {
      out.push_back(static_cast<std::uint8_t>(std::strtoul(item.c_str(), nullptr, 16)));
    } else if (const auto number = unsigned_from_text(item)) {
      out.push_back(static_cast<std::uint8_t>(*number));
    }
  }
  return out.size();
}

}  // namespace zanvik
