// The text of a chunk's first record, which has the channel of a log of unknown name.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace zanvik {

// Renders the first record of `chunk` (its 65,536 bytes, signature checked by the caller) as the
// XML-like text that its binary XML composes, including slots, in its original case. Returns
// nothing if the record names a template that cannot be found.
std::optional<std::string> first_record_text(std::span<const std::byte> chunk);

}  // namespace zanvik
