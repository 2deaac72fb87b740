// One row of the log2timeline form, and the plain way to write it: the reference that tests hold
// the fast way of timeline_writer.h against.
//
// A row holds texts as they are and up to four times; writing it gives one line for each distinct
// valid time, 17 columns wide as far as its texts allow. Not every column is cleaned: a separator
// in `user`, `host`, `sourcetype` or `format`, and a line end in `short_text` or `filename`, come
// out raw, which is meant. A count that is no time gives no line. Nothing here fails.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "options/output_format.h"
#include "output/write_context.h"

namespace zanvik {

struct timeline_row {
  std::array<std::uint64_t, 4> times{};  // FILETIMEs of M, A, C and B
  std::string timezone = "UTC";
  std::string source;
  std::string sourcetype;
  std::string type;
  std::string user;
  std::string host;
  std::string short_text;  // column "short"
  std::string desc;
  std::uint32_t version = 2;
  std::string filename;
  std::string inode;
  std::string notes;
  std::string format;
  std::string extra;

  // Copied from the options; see `output_format`.
  std::string csv_separator;
  char separator_char = 0;
  char separator_substitute = 0;
  format_descriptor descriptor;
  bool pair_datetime = false;
  bool base16 = false;
  bool no_whitespace = false;
  bool row_newline = true;
};

// Copies into `row` what it needs of the options, and what every row of the run has in common.
void prepare_timeline_row(timeline_row& row, const output_format& format,
                          const write_context& context);

// Sets the inode column: decimal digits, or with the row's `base16` "0x" and at least 8 digits.
void set_row_inode(timeline_row& row, std::uint64_t value);

// A line to be: the time, and which of the four it is, as in "M..B".
struct macb_entry {
  std::uint64_t filetime = 0;
  std::array<char, 4> letters{};
};
// The distinct valid times of the row, each where its first letter stands.
std::vector<macb_entry> macb_entries(const timeline_row& row);

// The header line, which stands once in a run.
std::string timeline_header(const output_format& format);

// Writes the header if the flag is on, and clears it; then the row's lines. A row without a valid
// time may so give a header and no line.
void write_timeline_row(bool& header_pending, std::ostream& out, const timeline_row& row);

}  // namespace zanvik
