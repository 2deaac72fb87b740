#include "output/cell_text.h"

#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {

std::string_view level_text(bool is_evtx, std::uint32_t level) {
  if (is_evtx) {
    switch (level) {
      case 0:
      case 4:
        return "info";
      case 1:
        return "crit";
      case 2:
        return "error";
      case 3:
        return "warn";
      default:
        return "unk";
    }
  }
  switch (level) {
    case 0:
    case 4:
      return "info";
    case 1:
      return "error";
    case 2:
      return "warn";
    case 8:
      return "a-pass";
    case 10:  // decimal, and meant: a failed audit is type 16, so it gives "unk"
      return "a-fail";
    default:
      return "unk";
  }
}

std::string format_offset(std::uint64_t value, bool base16) {
  return number_to_text(value, base16, 0);
}

text_rules::text_rules(const output_format& format)
    : separator_char(format.quoted_fields ? '\0' : format.separator_char),
      separator_substitute(format.separator_substitute),
      padded(!format.no_whitespace),
      quoted(format.quoted_fields) {}

void append_text_cell(std::string& out, std::string_view text, std::size_t width,
                      const text_rules& rules) {
  const std::size_t begin = out.size();
  const bool wrapped = rules.wraps(text);
  if (wrapped) out += '"';
  out += text;
  if (wrapped) out += '"';
  if (rules.separator_char != 0) {
    for (std::size_t i = out.find(rules.separator_char, begin); i != std::string::npos;
         i = out.find(rules.separator_char, i + 1)) {
      out[i] = rules.separator_substitute;
    }
  }
  // Two searches for one byte each are faster than one for either.
  if (out.find('\n', begin) != std::string::npos || out.find('\r', begin) != std::string::npos) {
    // The quotes are marked too: they follow an odd run of line ends.
    out.replace(begin, std::string::npos, mark_line_ends(std::string_view(out).substr(begin)));
  }
  if (rules.padded) pad_from(out, begin, width);
}

void pad_from(std::string& out, std::size_t begin, std::size_t width) {
  const std::size_t used = out.size() - begin;
  if (used < width) out.append(width - used, ' ');
}

}  // namespace zanvik
