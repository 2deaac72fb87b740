#include "base/text.h"

#include <algorithm>
#include <bit>

#include "base/digits.h"
#include "base/limits.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zanvik {
namespace {

constexpr std::string_view blanks = " \t\r\n";

constexpr char upper_char(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

#if defined(__SSE2__)
// Where one of two bytes is in the 16 bytes at `at`: bit i for byte i.
unsigned either_mask(const char* at, char a, char b) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  const __m128i hits = _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(a)),
                                    _mm_cmpeq_epi8(block, _mm_set1_epi8(b)));
  return static_cast<unsigned>(_mm_movemask_epi8(hits));
}
#endif

// The mark of the line end at the LF at `at`, and the bytes it takes before and after that LF.
struct line_end {
  std::string_view mark;
  std::size_t before, behind;
};

line_end line_end_at(std::string_view text, std::size_t at) {
  if (at > 0 && text[at - 1] == '\r') return {"[CRLF]", 1, 0};
  if (at + 1 < text.size() && text[at + 1] == '\r') return {"[LFCR]", 0, 1};
  return {"[LF]", 0, 0};
}

std::string mark_lone_crs(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 50);
  for (const char c : text) {
    if (c == '\r') {
      out += "[CR]";
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

std::string& to_lower_in_place(std::string& text) {
  for (char& c : text) c = lower_char(c);
  return text;
}

std::string to_lower(std::string_view text) {
  std::string lowered(text);
  to_lower_in_place(lowered);
  return lowered;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool trim_blanks(std::string& text) {
  const auto last = text.find_last_not_of(blanks);
  text.resize(last == std::string::npos ? 0 : last + 1);
  text.erase(0, text.find_first_not_of(blanks));
  return !text.empty();
}

std::size_t remove_char(std::string& text, char c) { return std::erase(text, c); }

std::size_t strip_line_ends(std::string& text) {
  const auto size = text.size();
  const auto last = text.find_last_not_of("\r\n");
  text.resize(last == std::string::npos ? 0 : last + 1);
  return size - text.size();
}

void replace_char(std::string& text, char from, char to, bool any_case) {
  if (from == to) return;
  std::replace(text.begin(), text.end(), from, to);
  if (!any_case) return;
  std::replace(text.begin(), text.end(), lower_char(from), to);
  std::replace(text.begin(), text.end(), upper_char(from), to);
}

bool replace_first(std::string& text, std::string_view what, std::string_view by, bool any_case) {
  if (what.empty()) return false;
  const auto at = any_case ? to_lower(text).find(to_lower(what)) : text.find(what);
  if (at == std::string::npos) return false;
  text.replace(at, what.size(), by);
  return true;
}

std::string mark_line_ends(std::string_view text) {
  auto lf = text.find('\n');
  if (lf == std::string_view::npos) {
    return text.find('\r') == std::string_view::npos ? std::string(text) : mark_lone_crs(text);
  }
  // If there is any LF, lone CRs are kept: meant, readers of the rows expect it.
  std::string out;
  out.reserve(text.size() + 50);
  std::size_t copied = 0;
  for (; lf != std::string_view::npos; lf = text.find('\n', copied)) {
    const line_end end = line_end_at(text, lf);
    const std::size_t copy_end = lf - end.before;
    if (copy_end >= copied) {
      out += text.substr(copied, copy_end - copied);
    } else if (out.size() <= limits::marked_text_growth * text.size()) {
      // Meant: in "\n\r\n" the CR belongs to the first LF and is also the one before the second, so
      // the length to copy is negative, which stands for all the rest.
      out += text.substr(copied);
    }
    out += end.mark;
    copied = lf + 1 + end.behind;
  }
  out += text.substr(copied);
  return out;
}

bool is_printable_name(std::string_view name) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto c = static_cast<unsigned char>(name[i]);
    if (c < 0x20 || c == 0x7f) return false;
    if (c == 0xc2 && i + 1 < name.size() && static_cast<unsigned char>(name[i + 1]) < 0xa0) {
      return false;
    }
  }
  return true;
}

std::string printable_name(std::string_view name) {
  std::string out;
  out.reserve(name.size());
  const auto escape = [&out](unsigned char c) {
    out += "\\x";
    append_hex(out, c, 2);
  };
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto c = static_cast<unsigned char>(name[i]);
    const auto next = i + 1 < name.size() ? static_cast<unsigned char>(name[i + 1]) : 0u;
    if (c < 0x20 || c == 0x7f) {
      escape(c);
    } else if (c == 0xc2 && next >= 0x80 && next < 0xa0) {  // U+0080 to U+009F
      escape(static_cast<unsigned char>(next));
      ++i;
    } else {
      out += name[i];
    }
  }
  return out;
}

bool equal_nocase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower_char(x) == lower_char(y); });
}

bool contains_nocase(std::string_view haystack, std::string_view needle) {
  if (needle.size() > haystack.size()) return false;
  if (needle.empty()) return true;
  const char lower = lower_char(needle[0]);
  const char upper = upper_char(needle[0]);
  const std::size_t last = haystack.size() - needle.size();  // its last possible start
  const auto found_at = [&](std::size_t at) {
    return equal_nocase({haystack.data() + at + 1, needle.size() - 1}, needle.substr(1));
  };
  std::size_t at = 0;
#if defined(__SSE2__)
  for (; at <= last && haystack.size() - at >= 16; at += 16) {
    for (unsigned mask = either_mask(haystack.data() + at, lower, upper); mask != 0;
         mask &= mask - 1) {
      const std::size_t hit = at + static_cast<std::size_t>(std::countr_zero(mask));
      if (hit > last) return false;
      if (found_at(hit)) return true;
    }
  }
#endif
  for (; at <= last; ++at) {
    if ((haystack[at] == lower || haystack[at] == upper) && found_at(at)) return true;
  }
  return false;
}

}  // namespace zanvik
