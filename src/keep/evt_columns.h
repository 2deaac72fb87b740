// Which columns a legacy .evt record gives, and the text of each. Names and sources of values are
// computed once for a command; for each record only values are written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "evt/evt_record.h"

namespace zanvik {

enum class evt_value : std::uint32_t {
  source_name,
  computer_name,
  user_sid,
  string,         // by its number, from 1
  pulled_string,  // the same, but "-" for the last string and for missing ones
  none,           // "-"
};

struct evt_value_source {
  evt_value kind = evt_value::none;
  std::uint32_t number = 0;
};

struct evt_column {
  std::string name;
  evt_value_source source;
};

// The columns of a listing of everything, in the order of the record: "source name", "computer
// name", with a SID "user sid", and "param_01" and so on for the strings.
std::vector<evt_column> evt_fields_all(std::size_t string_count, bool has_sid);

// The columns that a command names. "source name", "computer name" and "user sid" are known only in
// this order, at the start of a list of two or more (the SID of three or more). Every other name
// stands for the string with the number after its first "_"; one without "_" shows "-".
std::vector<evt_column> evt_fields_named(const std::vector<std::string>& names);

// Maximum bytes of buffer that write_evt_value needs.
std::size_t evt_value_bound(const evt_record& record, evt_value_source source);

// Writes the value to `out` and returns its end. It is on one line: carriage returns and tabs are
// removed and line feeds become commas. `marked` is set if it contains a comma or a vertical bar
// (it may be set without), else unchanged.
char* write_evt_value(char* out, const evt_record& record, evt_value_source source, bool& marked);

}  // namespace zanvik
