// Ledgers as text: a table for people, JSON lines and CSV for programs.
//
// In: a finished ledger. Out: text appended to a string, always whole. Paths and names in a log may
// have any bytes; they are written without control characters (table), as JSON strings with U+FFFD
// for bytes that are not UTF-8, or as quoted cells that no spreadsheet runs.
#pragma once

#include <string>

#include "inspect/log_ledger.h"

namespace zanvik {

struct table_options {
  bool chunks = false;  // a row for each chunk that holds something
};

void append_ledger_table(std::string& out, log_ledger& ledger, const table_options& options);
// One object, on one line.
void append_ledger_json(std::string& out, log_ledger& ledger);
// Rows under `ledger_csv_header`: facts, lines of the account, chunks, findings.
void append_ledger_csv(std::string& out, log_ledger& ledger);
inline constexpr const char* ledger_csv_header =
    "log,row,name,offset,chunk,record,records,bytes,value,meaning\n";

// "3,5 to 9": the numbers of a line, at most `most` ranges and then "...".
std::string ranges_text(number_ranges& numbers, std::size_t most);

}  // namespace zanvik
