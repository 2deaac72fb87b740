#include "base/number_text.h"

#include <cstdlib>

#include "base/digits.h"
#include "base/text.h"

namespace zanvik {
namespace {

bool starts_decimal(std::string_view text) {
  return !text.empty() && (text[0] == '-' || text[0] == '+' || (text[0] >= '0' && text[0] <= '9'));
}

// strtoull stops at junk, reads a missing number as 0 and one too big as all ones, and treats a
// minus sign as "wrap around", as the four rules need. `text` ends with a NUL.
std::uint64_t digits_from(const std::string& text, std::size_t from, int base) {
  return std::strtoull(text.c_str() + from, nullptr, base);
}

// The same within the bounds of a signed number.
std::int32_t signed_digits_from(const std::string& text, std::size_t from, int base) {
  return static_cast<std::int32_t>(std::strtoll(text.c_str() + from, nullptr, base));
}

bool is_letter(const std::string& text, std::size_t at, char lower) {
  return at < text.size() && lower_char(text[at]) == lower;
}

std::optional<std::uint64_t> bounded_digits(const std::string& text, std::size_t from,
                                            std::size_t most_digits, int base) {
  if (text.size() - from > most_digits) return std::nullopt;
  return digits_from(text, from, base);
}

unsigned width_by_value(std::uint64_t value) {
  if (value < 0xff) return 2;  // 0xff itself needs 4, and so on: the columns are defined this way
  if (value < 0xffff) return 4;
  if (value < 0xffffff) return 6;
  return 8;
}

}  // namespace

std::optional<std::uint32_t> unsigned_from_text(std::string_view text) {
  const std::string typed(trimmed(text));
  const auto cut = [](std::uint64_t value) { return static_cast<std::uint32_t>(value); };
  if (is_letter(typed, 1, 'x')) return cut(digits_from(typed, 2, 16));
  if (is_letter(typed, 0, 'x')) return cut(digits_from(typed, 1, 16));
  if (is_letter(typed, 0, 'o')) return cut(digits_from(typed, 1, 8));
  if (starts_decimal(typed)) return cut(digits_from(typed, 0, 10));
  if (typed.size() == 3 && typed[0] == '\'' && typed[2] == '\'') {
    return static_cast<unsigned char>(typed[1]);
  }
  return std::nullopt;
}

std::optional<std::int32_t> signed_from_text(std::string_view text) {
  const std::string typed(text);
  if (const auto x = typed.find('x'); x != std::string::npos) {
    return signed_digits_from(typed, x + 1, 16);
  }
  if (const auto o = typed.find('o'); o != std::string::npos) {
    return signed_digits_from(typed, o + 1, 8);
  }
  if (starts_decimal(typed)) return signed_digits_from(typed, 0, 10);
  return std::nullopt;
}

std::optional<std::int64_t> number_from_text(std::string_view text) {
  return signed_from_text(text);
}

std::optional<std::uint64_t> u64_from_text(std::string_view text) {
  if (text.size() > 30) return std::nullopt;
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return 0;
  const std::string typed(text.substr(first));
  if (typed.find_first_of(" \t") != std::string::npos) return std::nullopt;
  if (typed.size() > 2 && is_letter(typed, 1, 'x')) return bounded_digits(typed, 2, 16, 16);
  if (is_letter(typed, 0, 'x')) return bounded_digits(typed, 1, 16, 16);
  if (is_letter(typed, 0, 'o')) return bounded_digits(typed, 1, 23, 8);
  return bounded_digits(typed, 0, 20, 10);
}

void append_number(std::string& out, std::uint64_t value, bool hex, unsigned width) {
  if (!hex) return append_decimal(out, value);
  out += "0x";
  append_hex(out, value, width != 0 ? width : width_by_value(value));
}

bool is_whole_number(std::string_view text) {
  const std::string lower = to_lower(trimmed(text));
  std::string_view digits = lower;
  std::string_view allowed = "0123456789";
  if (digits.starts_with("0x") || digits.starts_with('x')) {
    digits.remove_prefix(digits.find('x') + 1);
    allowed = "0123456789abcdef";
  } else if (digits.starts_with('o')) {
    digits.remove_prefix(1);
    allowed = "01234567";
  } else if (digits.starts_with('-') || digits.starts_with('+')) {
    digits.remove_prefix(1);
  }
  return !digits.empty() && digits.find_first_not_of(allowed) == digits.npos;
}

std::string number_to_text(std::uint64_t value, bool hex, unsigned width) {
  std::string out;
  append_number(out, value, hex, width);
  return out;
}

}  // namespace zanvik
