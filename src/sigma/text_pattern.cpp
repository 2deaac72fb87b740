#include "sigma/text_pattern.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/fold_case.h"

namespace zanvik::sigma {
namespace {

using unit = text_pattern::unit;
using piece = text_pattern::piece;
constexpr auto npos = std::string_view::npos;

// The characters that Windows programs accept as the mark of an option, and two that look like it.
constexpr std::array<std::string_view, 5> dashes{"-", "/", "\u2013", "\u2014", "\u2015"};

// Length of the dash at the start of `text`, 0 if there is none.
std::size_t dash_length(std::string_view text) {
  for (const std::string_view dash : dashes) {
    if (text.starts_with(dash)) return dash.size();
  }
  return 0;
}

// Where `p` ends if it begins at `position`, else npos.
std::size_t piece_end(const piece& p, std::string_view text, std::size_t position) {
  for (const unit& u : p) {
    if (u.what == unit::kind::literal) {
      if (!text.substr(position).starts_with(u.text)) return npos;
      position += u.text.size();
    } else {
      if (position == text.size()) return npos;
      if (u.what == unit::kind::dash) {
        const std::size_t length = dash_length(text.substr(position));
        if (length == 0) return npos;
        position += length;
      } else {
        next_code_point(text, position);
      }
    }
  }
  return position;
}

// The position of `literal` in `text` from `position` on. memmem takes time in proportion to the
// text even if much of the literal is found again and again.
std::size_t find_literal(std::string_view literal, std::string_view text, std::size_t position) {
  const void* const found =
      memmem(text.data() + position, text.size() - position, literal.data(), literal.size());
  return found == nullptr ? npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

// The end of the first occurrence of `p` from `position` on, else npos.
std::size_t find_piece(const piece& p, std::string_view text, std::size_t position) {
  if (p.empty()) return position;
  const bool starts_literal = p[0].what == unit::kind::literal;
  for (;;) {
    if (starts_literal) {
      position = find_literal(p[0].text, text, position);
      if (position == npos) return npos;
    }
    const std::size_t end = piece_end(p, text, position);
    if (end != npos) return end;
    if (position == text.size()) return npos;
    next_code_point(text, position);
  }
}

// Where `p` must begin to end with `text`, npos if the text is too short.
std::size_t start_from_end(const piece& p, std::string_view text, std::size_t position) {
  for (auto u = p.rbegin(); u != p.rend(); ++u) {
    if (u->what == unit::kind::literal) {
      if (u->text.size() > position) return npos;
      position -= u->text.size();
    } else {
      if (position == 0) return npos;
      position = previous_code_point(text, position);
    }
  }
  return position;
}

}  // namespace

void text_pattern::append_unit(unit::kind what, std::string_view text) {
  piece& last = pieces_.back();
  if (what == unit::kind::literal && !last.empty() && last.back().what == what) {
    last.back().text += text;
  } else {
    last.push_back({what, std::string(text)});
  }
}

text_pattern text_pattern::plain(std::string_view text) {
  text_pattern out;
  if (!text.empty()) out.append_unit(unit::kind::literal, text);
  return out;
}

text_pattern text_pattern::parse(std::string_view value) {
  text_pattern out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    const char next = i + 1 < value.size() ? value[i + 1] : '\0';
    if (c == '*') {
      out.append_wildcard();
    } else if (c == '?') {
      out.append_unit(unit::kind::any_character, {});
    } else {
      if (c == '\\' && (next == '\\' || next == '*' || next == '?')) ++i;
      out.append_unit(unit::kind::literal, value.substr(i, 1));
    }
  }
  return out;
}

void text_pattern::append_wildcard() {
  if (pieces_.size() == 1 || !pieces_.back().empty()) pieces_.emplace_back();
}

void text_pattern::open_start() {
  if (!opens_start()) pieces_.insert(pieces_.begin(), piece{});
}

void text_pattern::open_end() { append_wildcard(); }

void text_pattern::add(const text_pattern& more) {
  for (std::size_t i = 0; i < more.pieces_.size(); ++i) {
    if (i != 0) append_wildcard();
    for (const unit& u : more.pieces_[i]) append_unit(u.what, u.text);
  }
}

void text_pattern::any_dash() {
  for (piece& p : pieces_) {
    piece split;
    for (const unit& u : p) {
      std::size_t begin = 0;
      for (std::size_t i = 0; u.what == unit::kind::literal && i < u.text.size();) {
        const std::size_t length = dash_length(std::string_view(u.text).substr(i));
        if (length != 0) {
          if (i != begin) split.push_back({u.what, u.text.substr(begin, i - begin)});
          split.push_back({unit::kind::dash, {}});
          begin = i + length;
        }
        i += length != 0 ? length : 1;
      }
      if (u.what != unit::kind::literal || begin < u.text.size()) {
        split.push_back({u.what, u.text.substr(begin)});
      }
    }
    p = std::move(split);
  }
}

void text_pattern::fold() {
  for (piece& p : pieces_) {
    for (unit& u : p) u.text = folded(u.text);
  }
}

bool text_pattern::is_simple() const {
  std::size_t literals = 0;
  for (const piece& p : pieces_) {
    if (p.empty()) continue;
    if (p.size() > 1 || p[0].what != unit::kind::literal) return false;
    ++literals;
  }
  return literals <= 1;
}

std::string_view text_pattern::simple_text() const {
  for (const piece& p : pieces_) {
    if (!p.empty()) return p[0].text;
  }
  return {};
}

std::string_view text_pattern::longest_literal() const {
  std::string_view longest;
  for (const piece& p : pieces_) {
    for (const unit& u : p) {
      if (u.text.size() > longest.size()) longest = u.text;
    }
  }
  return longest;
}

std::size_t text_pattern::costly_units() const {
  std::size_t count = pieces_.size() - 1;
  for (const piece& p : pieces_) {
    count += static_cast<std::size_t>(std::count_if(
        p.begin(), p.end(), [](const unit& u) { return u.what != unit::kind::literal; }));
  }
  return count;
}

std::optional<std::vector<std::string>> text_pattern::texts(std::size_t limit) const {
  if (pieces_.size() != 1) return std::nullopt;
  std::vector<std::string> out{""};
  for (const unit& u : pieces_[0]) {
    if (u.what == unit::kind::any_character) return std::nullopt;
    if (u.what == unit::kind::literal) {
      for (std::string& text : out) text += u.text;
      continue;
    }
    if (out.size() * dashes.size() > limit) return std::nullopt;
    std::vector<std::string> more;
    for (const std::string& text : out) {
      for (const std::string_view dash : dashes) more.push_back(text + std::string(dash));
    }
    out = std::move(more);
  }
  return out;
}

bool text_pattern::matches(std::string_view text) const {
  std::size_t position = piece_end(pieces_.front(), text, 0);
  if (position == npos || pieces_.size() == 1) return position == text.size();
  const std::size_t last = start_from_end(pieces_.back(), text, text.size());
  if (last == npos || last < position || piece_end(pieces_.back(), text, last) != text.size()) {
    return false;
  }
  for (std::size_t i = 1; i + 1 < pieces_.size(); ++i) {
    position = find_piece(pieces_[i], text.substr(0, last), position);
    if (position == npos) return false;
  }
  return true;
}

std::string text_pattern::key() const {
  std::string out;
  for (const piece& p : pieces_) {
    out += '*';
    for (const unit& u : p) {
      out += static_cast<char>('0' + static_cast<int>(u.what));
      out += std::to_string(u.text.size()) + ':' + u.text;
    }
  }
  return out;
}

}  // namespace zanvik::sigma
