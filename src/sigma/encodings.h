// What the encoding modifiers of a field make of a value's bytes.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zanvik::sigma {

std::string base64(std::string_view bytes);

// The part of the Base64 text of `bytes` that stays the same whatever stands before and behind
// them, for each of the three positions that they can have: a text of Base64 whose decoded bytes
// hold `bytes` holds one of these. Bytes of less than 3 may give an empty text.
std::array<std::string, 3> base64_at_offsets(std::string_view bytes);

// UTF-16 of a text in UTF-8; bytes that are no UTF-8 become U+FFFD.
std::string utf16_bytes(std::string_view text, bool big_endian);

}  // namespace zanvik::sigma
