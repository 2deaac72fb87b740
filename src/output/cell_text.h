// Texts of single cells, which tables and timelines share: the word for the level, an offset, and a
// text as in its column (with replaced separators, marks, quotes and padding). Any bytes may come
// in; nothing fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

// The word for the level of an .evtx record, or for the event type of an .evt record; "unk" for
// any value without one.
std::string_view level_text(bool is_evtx, std::uint32_t level);

// The offset in decimal, or with `base16` as "0x" and at least 2, 4, 6 or 8 digits.
std::string format_offset(std::uint64_t value, bool base16);

// A list in braces, which has no quotes of its own.
inline bool is_braced_list(std::string_view text) {
  return text.size() > 2 && text[0] == '{' && text[1] == '"';
}

// How texts are changed on their way into a table.
struct text_rules {
  char separator_char = 0;  // 0: nothing is replaced
  char separator_substitute = 0;
  bool padded = false;  // columns have widths
  bool quoted = false;  // every text is in double quotes

  explicit text_rules(const output_format& format);

  // Whether a text gets double quotes.
  bool wraps(std::string_view text) const { return quoted && !is_braced_list(text); }
};

// Appends `text` as a text cell of at least `width` bytes.
void append_text_cell(std::string& out, std::string_view text, std::size_t width,
                      const text_rules& rules);

// Appends blanks until `out` is `width` bytes longer than `begin`.
void pad_from(std::string& out, std::size_t begin, std::size_t width);

}  // namespace zanvik
