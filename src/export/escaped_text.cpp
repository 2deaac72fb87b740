#include "export/escaped_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "base/utf16_write.h"
#include "events/event_value.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zanvik {
namespace {

constexpr char32_t replacement = 0xfffd;

// What an ASCII character becomes in a form: copied whole, then the length counts.
struct escape_row {
  char text[6] = {};
  std::uint8_t length = 0;
  bool lossy = false;
};
using escape_rows = std::array<escape_row, 128>;

constexpr escape_row row_of(std::string_view text, bool lossy = false) {
  escape_row row;
  for (const char c : text) row.text[row.length++] = c;
  row.lossy = lossy;
  return row;
}

constexpr escape_row replaced_row() { return row_of("\xef\xbf\xbd", true); }

constexpr escape_rows json_rows(bool in_line) {
  constexpr char digits[] = "0123456789abcdef";
  escape_rows rows{};
  for (unsigned c = 0; c < rows.size(); ++c) {
    const char text[] = {static_cast<char>(c)};
    rows[c] = row_of({text, 1});
    if (c >= 0x20) continue;
    const char code[] = {'\\', 'u', '0', '0', digits[c >> 4], digits[c & 15]};
    rows[c] = in_line ? row_of(" ") : row_of({code, sizeof(code)});
  }
  rows['"'] = row_of("\\\"");
  rows['\\'] = row_of("\\\\");
  if (in_line) return rows;
  rows['\b'] = row_of("\\b");
  rows['\f'] = row_of("\\f");
  rows['\n'] = row_of("\\n");
  rows['\r'] = row_of("\\r");
  rows['\t'] = row_of("\\t");
  return rows;
}

constexpr escape_rows xml_rows(bool in_attribute) {
  escape_rows rows{};
  for (unsigned c = 0; c < rows.size(); ++c) {
    const char text[] = {static_cast<char>(c)};
    rows[c] = c < 0x20 ? replaced_row() : row_of({text, 1});
  }
  rows['&'] = row_of("&amp;");
  rows['<'] = row_of("&lt;");
  rows['>'] = row_of("&gt;");
  if (in_attribute) rows['"'] = row_of("&quot;");
  rows['\r'] = row_of("&#13;");
  rows['\t'] = row_of(in_attribute ? "&#9;" : "\t");
  rows['\n'] = row_of(in_attribute ? "&#10;" : "\n");
  return rows;
}

// A NUL is the one character that readers of CSV do not take.
constexpr escape_rows csv_rows() {
  escape_rows rows{};
  for (unsigned c = 0; c < rows.size(); ++c) {
    const char text[] = {static_cast<char>(c)};
    rows[c] = row_of({text, 1});
  }
  rows['"'] = row_of("\"\"");
  rows[0] = replaced_row();
  return rows;
}

template <escape_form form>
constexpr escape_rows rows_of() {
  switch (form) {
    case escape_form::json:
      return json_rows(false);
    case escape_form::json_line:
      return json_rows(true);
    case escape_form::xml_text:
      return xml_rows(false);
    case escape_form::xml_attribute:
      return xml_rows(true);
    case escape_form::csv:
      break;
  }
  return csv_rows();
}
template <escape_form form>
constexpr escape_rows rows = rows_of<form>();

// Any one character. Up to 8 bytes are written, whatever its length.
template <escape_form form>
char* write_one(char* out, char32_t c, bool& lossy) {
  if (c < 0x80) {
    const escape_row& row = rows<form>[c];
    std::memcpy(out, &row, sizeof(row));
    lossy = lossy || row.lossy;
    return out + row.length;
  }
  const bool is_xml = form == escape_form::xml_text || form == escape_form::xml_attribute;
  if (is_xml && (c == 0xfffe || c == 0xffff)) {
    lossy = true;
    c = replacement;
  }
  return write_utf8(out, c);
}

// Whether the character is not copied as it is; what follows a special one often is special too.
template <escape_form form>
bool is_special(char32_t c) {
  return c >= 0x80 || rows<form>[c].length != 1;
}

#if defined(__SSE2__)
constexpr std::ptrdiff_t vector_bytes = 32;  // of UTF-16

// Which of these bytes a form cannot copy; the highest bit of each counts.
template <escape_form form>
__m128i special_bytes(__m128i bytes) {
  const auto is = [bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  if constexpr (form == escape_form::csv) {
    return _mm_or_si128(bytes, _mm_or_si128(is(0), is('"')));  // 0: also units beyond 0x7fff
  } else {
    const __m128i control =
        _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(0x1f)), _mm_set1_epi8(0x1f));
    const __m128i odd = _mm_or_si128(bytes, control);
    if constexpr (form == escape_form::json || form == escape_form::json_line) {
      return _mm_or_si128(odd, _mm_or_si128(is('"'), is('\\')));
    } else {
      const __m128i brackets = _mm_or_si128(is('<'), is('>'));
      const __m128i marks =
          form == escape_form::xml_attribute ? _mm_or_si128(is('&'), is('"')) : is('&');
      return _mm_or_si128(odd, _mm_or_si128(brackets, marks));
    }
  }
}

// Copies up to 16 units of plain ASCII, at most `most`; returns how many.
template <escape_form form>
unsigned copy_plain(char* out, const std::byte* in, unsigned most) {
  const auto* units = reinterpret_cast<const __m128i*>(in);
  // Units beyond 0xff become bytes that are special: 0xff, or 0 from 0x8000 on.
  const __m128i bytes = _mm_packus_epi16(_mm_loadu_si128(units), _mm_loadu_si128(units + 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
  const auto mask = static_cast<unsigned>(_mm_movemask_epi8(special_bytes<form>(bytes)));
  return static_cast<unsigned>(__builtin_ctz(mask | 1u << most));
}

// Copies fewer than 16 bytes.
void copy_short(char* to, const std::byte* from, std::size_t bytes) {
  if (bytes >= 8) {
    std::memcpy(to, from, 8);
    std::memcpy(to + bytes - 8, from + bytes - 8, 8);
  } else if (bytes >= 4) {
    std::memcpy(to, from, 4);
    std::memcpy(to + bytes - 4, from + bytes - 4, 4);
  } else {
    for (std::size_t i = 0; i < bytes; ++i) to[i] = static_cast<char>(from[i]);
  }
}

// Copies plain ASCII from the start of `text`; returns how many bytes. Up to 16 more are written.
template <escape_form form>
std::size_t copy_plain_bytes(char* out, std::span<const std::byte> text) {
  constexpr std::size_t step = 16;
  const auto copy = [](char* to, const void* from, unsigned most) {
    const __m128i bytes = _mm_loadu_si128(static_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(special_bytes<form>(bytes)));
    return static_cast<unsigned>(__builtin_ctz(mask | 1u << most));
  };
  std::size_t at = 0;
  for (; text.size() - at >= step; at += step) {
    const unsigned copied = copy(out + at, text.data() + at, step);
    if (copied != step) return at + copied;
  }
  const std::size_t left = text.size() - at;
  if (left == 0) return at;
  char last[step] = {};
  copy_short(last, text.data() + at, left);
  return at + copy(out + at, last, static_cast<unsigned>(left));
}
#else
template <escape_form form>
std::size_t copy_plain_bytes(char*, std::span<const std::byte>) {
  return 0;
}
#endif

// Decodes one character of UTF-8 at `at`; U+FFFD for a byte that begins none.
char32_t next_utf8(std::string_view text, std::size_t& at, bool& lossy) {
  const auto byte = [&text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byte(at);
  if (lead < 0x80) return byte(at++);
  const unsigned more = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : 1;
  char32_t code = lead & (0x3fu >> more);
  bool good = lead >= 0xc2 && lead < 0xf5 && text.size() - at > more;
  for (unsigned i = 1; good && i <= more; ++i) {
    good = (byte(at + i) & 0xc0) == 0x80;
    code = code << 6 | (byte(at + i) & 0x3f);
  }
  constexpr char32_t least[] = {0, 0x80, 0x800, 0x10000};
  good = good && code >= least[more] && code < 0x110000 && (code < 0xd800 || code > 0xdfff);
  if (!good) {
    lossy = true;
    ++at;
    return replacement;
  }
  at += more + 1;
  return code;
}

constexpr bool is_name_start(char32_t c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         (c >= 0xc0 && c <= 0x2ff && c != 0xd7 && c != 0xf7) || (c >= 0x370 && c <= 0x37d) ||
         (c >= 0x37f && c <= 0x1fff) || (c >= 0x2070 && c <= 0x218f) ||
         (c >= 0x2c00 && c <= 0x2fef) || (c >= 0x3001 && c <= 0xd7ff) ||
         (c >= 0xf900 && c <= 0xfdcf) || (c >= 0xfdf0 && c <= 0xfffc) ||
         (c >= 0x10000 && c <= 0xeffff);
}

constexpr bool is_name_character(char32_t c) {
  return is_name_start(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xb7 ||
         (c >= 0x300 && c <= 0x36f) || c == 0x203f || c == 0x2040;
}

// ASCII letters and `_`; digits, `-` and `.` as well.
constexpr auto plain_name_characters = [] {
  std::array<std::uint8_t, 256> kinds{};
  for (unsigned c = 0; c < 0x80; ++c) {
    kinds[c] = is_name_start(c) ? 3 : is_name_character(c) ? 1 : 0;
  }
  return kinds;
}();

bool is_plain_name(std::string_view name) {
  std::uint8_t kinds =
      name.empty() ? 0 : plain_name_characters[static_cast<std::uint8_t>(name[0])] >> 1;
  for (const char c : name) kinds &= plain_name_characters[static_cast<std::uint8_t>(c)];
  return kinds != 0;
}

}  // namespace

template <escape_form form>
char* write_escaped_utf16(char* out, std::span<const std::byte> text, const std::byte* readable_end,
                          bool& lossy) {
  const std::byte* in = text.data();
  const std::byte* const end = in + (text.size() & ~std::size_t{1});
  const auto unit = [&in] {
    std::uint16_t value;
    std::memcpy(&value, in, sizeof(value));
    return value;
  };
  while (in != end) {
#if defined(__SSE2__)
    if (readable_end - in >= vector_bytes) {
      const auto left = static_cast<std::size_t>(end - in) / 2;
      const auto most = static_cast<unsigned>(std::min<std::size_t>(left, 16));
      const unsigned copied = copy_plain<form>(out, in, most);
      out += copied;
      in += 2 * copied;
      if (copied == most) continue;
    }
#else
    (void)readable_end;
#endif
    // What stopped it, and what follows as long as it is not plain either.
    do {
      char32_t c = unit();
      if (c < 0x80) {
        in += 2;
      } else {
        std::size_t used = 0;
        c = next_code_point({in, end}, used, lossy);
        in += used;
      }
      out = write_one<form>(out, c, lossy);
    } while (in != end && is_special<form>(unit()));
  }
  return out;
}

template <escape_form form>
char* write_escaped_ansi(char* out, std::span<const std::byte> text, bool& lossy) {
  while (!text.empty()) {
    const std::size_t plain = copy_plain_bytes<form>(out, text);
    out += plain;
    text = text.subspan(plain);
    if (text.empty()) break;
    do {
      out = write_one<form>(out, from_ansi(std::to_integer<std::uint8_t>(text.front())), lossy);
      text = text.subspan(1);
    } while (!text.empty() && is_special<form>(std::to_integer<std::uint8_t>(text.front())));
  }
  return out;
}

template <escape_form form>
char* write_escaped_utf8(char* out, std::string_view text, bool& lossy) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t plain =
        copy_plain_bytes<form>(out, std::as_bytes(std::span(text)).subspan(at));
    out += plain;
    at += plain;
    if (at == text.size()) break;
    do {
      out = write_one<form>(out, next_utf8(text, at, lossy), lossy);
    } while (at < text.size() && is_special<form>(static_cast<std::uint8_t>(text[at])));
  }
  return out;
}

#define ZANVIK_ESCAPES(form)                                                                    \
  template char* write_escaped_utf16<form>(char*, std::span<const std::byte>, const std::byte*, \
                                           bool&);                                              \
  template char* write_escaped_ansi<form>(char*, std::span<const std::byte>, bool&);            \
  template char* write_escaped_utf8<form>(char*, std::string_view, bool&);
ZANVIK_ESCAPES(escape_form::json)
ZANVIK_ESCAPES(escape_form::xml_text)
ZANVIK_ESCAPES(escape_form::xml_attribute)
ZANVIK_ESCAPES(escape_form::json_line)
ZANVIK_ESCAPES(escape_form::csv)
#undef ZANVIK_ESCAPES

void append_escaped(std::string& out, std::string_view text, escape_form form, bool& lossy) {
  const std::size_t before = out.size();
  out.resize(before + escaped_bound(text.size()));
  char* const begin = out.data() + before;
  char* end = begin;
  switch (form) {
    case escape_form::json:
      end = write_escaped_utf8<escape_form::json>(begin, text, lossy);
      break;
    case escape_form::xml_text:
      end = write_escaped_utf8<escape_form::xml_text>(begin, text, lossy);
      break;
    case escape_form::xml_attribute:
      end = write_escaped_utf8<escape_form::xml_attribute>(begin, text, lossy);
      break;
    case escape_form::json_line:
      end = write_escaped_utf8<escape_form::json_line>(begin, text, lossy);
      break;
    case escape_form::csv:
      end = write_escaped_utf8<escape_form::csv>(begin, text, lossy);
      break;
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
}

std::string xml_name(std::string_view name, bool& lossy) {
  if (is_plain_name(name)) return std::string(name);
  std::string out;
  bool ignored = false;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t before = at;
    const char32_t c = next_utf8(name, at, ignored);
    if (out.empty() ? is_name_start(c) : is_name_character(c)) {
      out.append(name.substr(before, at - before));
    } else {
      out += '_';
      lossy = true;
    }
  }
  if (!out.empty()) return out;
  lossy = true;
  return "_";
}

}  // namespace zanvik
