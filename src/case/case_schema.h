// The tables of a case. docs/case.md describes them to people.
//
// Events hold ids of the texts that many of them share: channel, provider, computer and SID. A
// number that does not fit in the 63 bits that SQLite has for it is kept as a text, in hexadecimal
// with 0x, which no column takes for a number. Keywords are 64 bits, not a number.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zanvik {

// Stands in the header of the file ("ZNVK"): it says that a database is a case.
inline constexpr std::uint32_t case_application_id = 0x5a4e564b;
// Rises when a table changes; a case of another one is refused.
inline constexpr std::uint32_t case_version = 1;

struct case_table {
  std::string_view name;
  std::string_view sql;  // as the database keeps it
};
std::span<const case_table> case_tables();

// Indexes, which are made when all logs are in the case.
struct case_index {
  std::string_view name;
  std::string_view on;
};
std::span<const case_index> case_indexes();

// The view `events`, in which the texts stand in place of their ids.
std::string_view events_view();

// The full-text index of events' data, and the view that it shows texts from.
inline constexpr std::string_view full_text_table = "full_text";
std::string_view full_text_sql();
// Adds the events from an id on to the index; the parameter is that id.
std::string_view full_text_add();

// Bits of the column `flags`: those of `event_flag`, and this one for a text that could not be
// held as it is.
inline constexpr std::uint32_t lossy_flag = 64;

}  // namespace zanvik
