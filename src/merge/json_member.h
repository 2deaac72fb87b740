// Looks up a member in the text of a JSON object, by the names that lead to it, without reading
// more of the text than comes before it.
#pragma once

#include <initializer_list>
#include <string_view>

namespace zanvik {

// The text of the string that the names lead to, from object to object, as it is written; empty
// when there is none, or when the text is no JSON.
std::string_view json_text_at(std::string_view json, std::initializer_list<std::string_view> names);

}  // namespace zanvik
