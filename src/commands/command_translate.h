// What `-translate` asks for: which binary field is shown in which form.
#pragma once

#include <cstdint>
#include <string_view>

#include "options/output_format.h"

namespace zanvik {

enum class translate_kind : std::uint32_t { tf = 1, mbr = 2, vbr = 3, vtbl = 4 };

struct translate_spec {
  translate_kind kind = translate_kind::tf;
  std::uint16_t offset : 15 = 0;  // where in the value the data starts, in bytes
  std::uint16_t decimal : 1 = 0;  // show numbers in base 10
  bool year_first = false;        // show dates as in the run's date format

  bool operator==(const translate_spec&) const = default;
};

// Reads "kind" or "kind#offset". Returns false, with `spec` unchanged, for any other text.
bool parse_translate_spec(translate_spec& spec, std::string_view text, const output_format& format);

}  // namespace zanvik
