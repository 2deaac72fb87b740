#include "base/fold_case.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "base/text.h"
#include "base/utf16.h"

namespace zanvik {
namespace {

// Upper-case letters from `first` to `last`, each `step` apart, and the distance to their lower
// case.
struct letter_range {
  char32_t first, last;
  std::uint32_t step;
  std::int32_t distance;
};

constexpr std::array<letter_range, 23> letters{{
    {0x00c0, 0x00d6, 1, 32},    // Latin-1
    {0x00d8, 0x00de, 1, 32},    // the same, behind the multiplication sign
    {0x0100, 0x012e, 2, 1},     // Latin Extended-A; U+0130 has no lower case of one letter
    {0x0132, 0x0136, 2, 1},     //
    {0x0139, 0x0147, 2, 1},     //
    {0x014a, 0x0176, 2, 1},     //
    {0x0178, 0x0178, 1, -121},  // Y with diaeresis
    {0x0179, 0x017d, 2, 1},     //
    {0x017f, 0x017f, 1, -268},  // long s; like the Kelvin sign, as regular expressions have it
    {0x0386, 0x0386, 1, 38},    // Greek with accents
    {0x0388, 0x038a, 1, 37},    //
    {0x038c, 0x038c, 1, 64},    //
    {0x038e, 0x038f, 1, 63},    //
    {0x0391, 0x03a1, 1, 32},    // Greek
    {0x03a3, 0x03ab, 1, 32},    //
    {0x0400, 0x040f, 1, 80},    // Cyrillic
    {0x0410, 0x042f, 1, 32},    //
    {0x0460, 0x0480, 2, 1},     //
    {0x048a, 0x04be, 2, 1},     //
    {0x0531, 0x0556, 1, 48},    // Armenian
    {0x1e00, 0x1e94, 2, 1},     // Latin Extended Additional
    {0x212a, 0x212a, 1, -8383}, {0xff21, 0xff3a, 1, 32},  // full-width
}};

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

char32_t fold_code_point(char32_t c) {
  if (c < 0x80) return static_cast<unsigned char>(lower_char(static_cast<char>(c)));
  const auto range = std::partition_point(letters.begin(), letters.end(),
                                          [c](const letter_range& r) { return r.last < c; });
  if (range == letters.end() || c < range->first || (c - range->first) % range->step != 0) return c;
  return static_cast<char32_t>(static_cast<std::int32_t>(c) + range->distance);
}

code_point next_code_point(std::string_view text, std::size_t& position) {
  const auto lead = static_cast<unsigned char>(text[position++]);
  if (lead < 0x80) return {lead, true};
  const std::size_t more = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
  if (more == 0 || lead >= 0xf8 || more > text.size() - position) return {lead, false};
  char32_t value = lead & (0x3fU >> more);
  for (std::size_t i = 0; i < more; ++i) {
    if (!is_continuation(text[position + i])) return {lead, false};
    value = value << 6 | (static_cast<unsigned char>(text[position + i]) & 0x3fU);
  }
  position += more;
  return {value, true};
}

std::size_t previous_code_point(std::string_view text, std::size_t position) {
  // The lead byte is at most 3 bytes ahead of the last one.
  for (std::size_t back = 1; back <= 4 && back <= position; ++back) {
    if (is_continuation(text[position - back])) continue;
    std::size_t next = position - back;
    if (next_code_point(text, next).valid && next == position) return position - back;
    break;
  }
  return position - 1;
}

void append_folded(std::string& out, std::string_view text) {
  const auto first_wide = std::find_if(text.begin(), text.end(),
                                       [](char c) { return static_cast<signed char>(c) < 0; });
  const std::size_t old = out.size();
  const auto ascii = static_cast<std::size_t>(first_wide - text.begin());
  out.resize(old + ascii);
  std::transform(text.begin(), first_wide, out.begin() + static_cast<std::ptrdiff_t>(old),
                 lower_char);
  for (std::size_t position = ascii; position < text.size();) {
    const std::size_t start = position;
    const code_point c = next_code_point(text, position);
    const char32_t lower = c.valid ? fold_code_point(c.value) : c.value;
    if (!c.valid || lower == c.value) {
      out.append(text, start, position - start);
    } else {
      append_utf8(out, lower);
    }
  }
}

std::string folded(std::string_view text) {
  std::string out;
  append_folded(out, text);
  return out;
}

}  // namespace zanvik
