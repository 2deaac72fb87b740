#include "commands/command_translate.h"

#include <array>
#include <string>

#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr auto npos = std::string_view::npos;

struct named_kind {
  std::string_view name;
  translate_kind kind;
};
constexpr std::array<named_kind, 4> kinds = {{
    {"tf", translate_kind::tf},
    {"mbr", translate_kind::mbr},
    {"vbr", translate_kind::vbr},
    {"vtbl", translate_kind::vtbl},
}};

// Meant: with a "!" the position of the "#" is used as a length, so a text with both keeps the "#"
// in its kind and is refused.
std::string_view kind_text(std::string_view text) {
  const auto hash = text.find('#');
  const auto mark = text.find('!');
  return mark == npos ? text.substr(0, hash) : text.substr(mark + 1, hash);
}

}  // namespace

bool parse_translate_spec(translate_spec& spec, std::string_view text,
                          const output_format& format) {
  const std::string wanted = to_lower(kind_text(text));
  for (const named_kind& row : kinds) {
    if (row.name != wanted) continue;
    const auto hash = text.find('#');
    const auto offset = hash == npos ? 0 : unsigned_from_text(text.substr(hash + 1)).value_or(0);
    spec.kind = row.kind;
    spec.offset = offset & 0x7fff;
    spec.decimal = !format.base16;
    spec.year_first = format.date_format.starts_with("yy") && format.date_format.size() >= 5;
    return true;
  }
  return false;
}

}  // namespace zanvik
