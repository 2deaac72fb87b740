// What sets the columns of records from slack apart: the texts of their slots as columns of their
// own, and the cleaning of names that were read from anywhere. This is the plain way: the columns
// are taken apart into a map and packed again. Most records take the quick one (slot_columns.h).
#pragma once

#include <string>

#include "events/log_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

// Gives `kept` these columns in place of its own, in the memory of `records`.
void pack_columns(LogRecord& kept, const column_map& columns, record_container& records);

// The name of an own slot's column, by the slot's number from 1: "s01" and so on.
std::string slot_column_name(unsigned number);

// Adds the text of each own slot that has one, as "s01" and so on by the slot's number from 1, and
// the marks of all slots to `flags`.
void add_slot_columns(column_map& columns, std::uint32_t& flags, const record_fields& record);

// A good name has fewer than 65 bytes and no line feed: its value loses the blanks at its ends, and
// one of more than 256 bytes gets "..." behind it (it is not cut; that is meant). The value of any
// other name moves to "unk1" and so on.
void clean_slack_columns(column_map& columns);

}  // namespace zanvik
