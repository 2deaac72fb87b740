// The values of cells: words for codes, and what a report works out from several values.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "events/event_view.h"
#include "questions/questions.h"

namespace zanvik {

// Appends a value of that column as visible text: "network (3)".
void append_cell_value(std::string& out, const question_column& column, std::string_view value);

// Fills in cells of a row that follow from its others: how far a clock was set, what a task runs.
void complete_cells(const question& asked, std::span<std::string> cells);

// "free space, cut": what is odd about an event; empty if nothing is.
std::string mark_text(std::uint32_t flags);

// The event's data on one line: "TargetUserName: anna; LogonType: 3".
std::string data_text(const event_view& event);

}  // namespace zanvik
