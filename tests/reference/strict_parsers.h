// Strict readers of the documents that forms write: they take less than the common ones do, so that
// what they take loads anywhere. Each returns what is wrong, or an empty text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zanvik::testing {

// One JSON object in each line (RFC 8259), in UTF-8, with no name twice in an object.
std::string fault_in_json_lines(std::string_view text);

// An XML 1.0 document of elements, attributes, text and instructions: no doctype, comment or CDATA,
// no references but characters and the five entities, no prefix but in declarations.
std::string fault_in_xml(std::string_view text);

// Rows of `cells` cells each (RFC 4180, lines ended by \n), in UTF-8 without NUL.
std::string fault_in_csv(std::string_view text, std::size_t cells);

}  // namespace zanvik::testing
