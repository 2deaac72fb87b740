#include "output/timelines/timeline_row.h"

#include "base/digits.h"
#include "base/text.h"
#include "base/time_format.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

std::string header_line(const std::string& separator, bool pair_datetime) {
  std::string line = pair_datetime ? "date/time" : "date" + separator + "time";
  for (const char* name :
       {"timezone", "MACB", "source", "sourcetype", "type", "user", "host", "short", "desc",
        "version", "filename", "inode", "notes", "format", "extra"}) {
    line += separator + name;
  }
  return line + '\n';
}

void append_entry_time(std::string& line, const timeline_row& row, std::uint64_t filetime) {
  std::string date, time;
  // False for a descriptor without separator too, though the texts are there.
  (void)format_with_descriptor(date, time, qx::time(filetime, qx::type_time::filetime),
                               row.descriptor);
  const char* const blank = row.no_whitespace ? "" : " ";
  if (row.pair_datetime) {
    line += blank + date + ' ' + time;
  } else {
    line += date + row.csv_separator + blank + time;
  }
}

}  // namespace

void prepare_timeline_row(timeline_row& row, const output_format& format,
                          const write_context& context) {
  row.sourcetype = format.tool_tag;
  row.user = context.username;
  row.host = context.hostname;
  row.format = std::string(context.program_name) + " (morvane)";
  row.csv_separator = format.csv_separator;
  row.separator_char = format.separator_char;
  row.separator_substitute = format.separator_substitute;
  row.descriptor = format.descriptor;
  row.pair_datetime = format.pair_datetime;
  row.base16 = format.base16;
  row.no_whitespace = format.no_whitespace;
  row.row_newline = format.row_newline;
}

void set_row_inode(timeline_row& row, std::uint64_t value) {
  row.inode.clear();
  if (row.base16) {
    row.inode = "0x";
    append_hex(row.inode, value, 8);
  } else {
    append_decimal(row.inode, value);
  }
}

std::vector<macb_entry> macb_entries(const timeline_row& row) {
  std::vector<macb_entry> entries;
  std::array<bool, 4> taken{};
  for (std::size_t i = 0; i < row.times.size(); ++i) {
    if (taken[i] || !is_valid_filetime(row.times[i])) continue;
    macb_entry entry{row.times[i], {'.', '.', '.', '.'}};
    for (std::size_t j = i; j < row.times.size(); ++j) {
      if (row.times[j] != row.times[i]) continue;
      entry.letters[j] = "MACB"[j];
      taken[j] = true;
    }
    entries.push_back(entry);
  }
  return entries;
}

std::string timeline_header(const output_format& format) {
  return header_line(format.csv_separator, format.pair_datetime);
}

void write_timeline_row(bool& header_pending, std::ostream& out, const timeline_row& row) {
  if (header_pending) out << header_line(row.csv_separator, row.pair_datetime);
  header_pending = false;
  const std::string& separator = row.csv_separator;
  const auto cleaned = [&row](std::string text) {
    if (row.separator_char != 0 && row.separator_substitute != 0) {
      replace_char(text, row.separator_char, row.separator_substitute, false);
    }
    return text;
  };
  for (const macb_entry& entry : macb_entries(row)) {
    std::string line;
    append_entry_time(line, row, entry.filetime);
    const std::string letters(entry.letters.begin(), entry.letters.end());
    for (const std::string& text :
         {row.timezone, letters, row.source, row.sourcetype, row.type, row.user, row.host,
          cleaned(row.short_text), mark_line_ends(cleaned(row.desc)), std::to_string(row.version),
          cleaned(row.filename), row.inode, mark_line_ends(cleaned(row.notes)), row.format,
          mark_line_ends(cleaned(row.extra))}) {
      line += separator + text;
    }
    if (row.row_newline) line += '\n';
    out << line;
  }
}

}  // namespace zanvik
