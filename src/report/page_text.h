// Any text as part of the page, in a form that cannot leave its place there.
//
// Texts come from logs, rules and file names, so they may be made to mislead. `append_visible`
// makes UTF-8 of any bytes in which nothing is hidden: control characters become their pictures,
// and what reverses, joins or hides characters becomes its number, "[U+202E]". The others take its
// result, or text of ours, and add the escapes of HTML and JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zanvik {

// At most `most` bytes of `text` are taken; what is left out is counted at the end. Line ends
// become
// "\n"; tabs stay.
void append_visible(std::string& out, std::string_view text, std::size_t most);
std::string visible(std::string_view text, std::size_t most = 4096);

// Text or a double-quoted attribute's value.
void append_html(std::string& out, std::string_view text);

// A JSON string with its quotes, for a script element: no `<`, no `&`, no line separators.
void append_json(std::string& out, std::string_view text);
// Its bytes.
std::size_t json_bytes(std::string_view text);

// "1,234,567"
std::string grouped(std::uint64_t number);

}  // namespace zanvik
