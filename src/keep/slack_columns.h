// What is special about the columns of records from slack: the texts of their slots as separate
// columns, and the cleaning of names that may be any bytes. This is the plain way: the columns are
// put into a map and packed again. Most records take the quick way (slot_columns.h).
#pragma once

#include <string>

#include "events/log_record.h"
#include "evtx/record_fields.h"

namespace zanvik {

// Replaces the columns of `kept` with these, in the memory of `records`.
void pack_columns(LogRecord& kept, const column_map& columns, record_container& records);

// The name of an own slot's column, by the slot's number from 1: "s01" and so on.
std::string slot_column_name(unsigned number);

// Adds the text of each own slot that has one, as "s01" and so on by the slot's number from 1, and
// adds the marks of all slots to `flags`.
void add_slot_columns(column_map& columns, std::uint32_t& flags, const record_fields& record);

// A good name has fewer than 65 bytes and no line feed: its value loses the blanks at its ends, and
// one of more than 256 bytes is followed by "..." (it is not cut; that is meant). The value of any
// other name moves to "unk1" and so on.
void clean_slack_columns(column_map& columns);

}  // namespace zanvik
