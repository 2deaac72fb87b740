// Forms of results that can be merged: how a file is cut into items, and the time of an item as far
// as it shows.
//
// An item is the text of one event with the line end behind it. A result is our own, but what
// stands in it came from logs: a text that is not of the form gives no time, never a read outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zanvik {

struct result_form {
  std::string_view name;
  std::string_view begins;  // what a result begins with
  bool has_header;          // its first item is no event
  // The bytes of the first item in `text`; npos when it does not end in it. `last`: nothing comes
  // behind `text`.
  std::size_t (*item_end)(std::string_view text, bool last);
  // The time that the item shows; a number that rises with it. False when it shows none.
  bool (*shown_time)(std::string_view item, std::uint64_t& time);
};

std::span<const result_form> result_forms();
// The form of a result that begins with `head`; null for none.
const result_form* form_of_result(std::string_view head);

}  // namespace zanvik
