// The encoding modifiers of a field, applied to a value's bytes.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zanvik::sigma {

std::string base64(std::string_view bytes);

// The part of the Base64 text of `bytes` that does not depend on the bytes before and after, for
// each of the three positions that they can have: a Base64 text whose decoded bytes contain `bytes`
// contains one of these. Fewer than 3 bytes may give an empty text.
std::array<std::string, 3> base64_at_offsets(std::string_view bytes);

// UTF-16 of a text in UTF-8; bytes that are not UTF-8 become U+FFFD.
std::string utf16_bytes(std::string_view text, bool big_endian);

}  // namespace zanvik::sigma
