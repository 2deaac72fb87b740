#include <algorithm>
#include <string>
#include <string_view>

#include "base/text.h"
#include "base/time_format.h"
#include "base/time_value.h"
#include "output/cell_text.h"
#include "output/path_alias.h"
#include "output/timelines/timeline_text.h"
#include "reference/plain_output.h"

namespace zanvik {
namespace {

// "[name:value" and `end` for each field with a value.
std::string field_list(const column_map& fields, std::string_view end) {
  std::string list;
  for (const auto& [name, value] : fields) {
    if (value.empty()) continue;
    std::string shown = value;
    replace_char(shown, ',', ';', false);  // whatever the separator is
    list += '[' + name + ':' + shown;
    list += end;
  }
  return list;
}

void cut_last(std::string& text, std::size_t count) {
  text.resize(text.size() - std::min(count, text.size()));
}

std::string notes_of(const LogRecord& record, const output_format& format,
                     const write_context& context) {
  std::string members;
  const auto add = [&members](std::string_view name, const std::string& value) {
    if (!members.empty()) members += "; ";
    members += '"' + std::string(name) + "\":\"" + value + '"';
  };
  if (context.show_offsets) add("offset", format_offset(record.file_offset, format.base16));
  if (context.inc_slack && (record.flags & record_plain_or_slack)) add("slack", "true");
  if (!record.provider->empty()) add("Provider", *record.provider);
  return members.empty() ? members : '{' + members + '}';
}

// Date and time as the first one or two columns.
std::string time_columns(std::uint64_t filetime, const output_format& format) {
  std::string date, time;
  // Also false for a descriptor without separator, although the texts are there.
  (void)format_with_descriptor(date, time, qx::time(filetime, qx::type_time::filetime),
                               format.descriptor);
  const std::string blank = format.no_whitespace ? "" : " ";
  return format.pair_datetime ? blank + date + ' ' + time
                              : date + format.csv_separator + blank + time;
}

// Not every column is cleaned: a separator in `user`, `host`, `sourcetype` or `format`, and a line
// end in `short` or `filename`, are written unchanged, which is meant. The host is the record's own
// computer, or empty.
std::string timeline_line(const LogRecord& record, const output_format& format,
                          const write_context& context) {
  if (!is_valid_filetime(record.time)) return {};
  column_map fields = columns_of(record);
  const auto cleaned = [&format](std::string text) {
    if (format.separator_char != 0 && format.separator_substitute != 0) {
      replace_char(text, format.separator_char, format.separator_substitute, false);
    }
    return text;
  };
  std::string sourcetype(context.log.channel);
  if (sourcetype.empty() && context.log.kind == log_kind::evtx && fields.count("Channel")) {
    sourcetype = fields["Channel"];
  }
  const char* const computer = context.log.kind == log_kind::evtx ? "Computer" : "computer name";
  const std::string host = fields.count(computer) ? fields[computer] : "";
  std::string desc = field_list(fields, "] ");
  cut_last(desc, 1);
  std::string event = "Event ID: " + std::to_string(record.event_id);
  if (!record.provider->empty()) event += " : " + *record.provider;
  std::string line = time_columns(record.time, format);
  for (const std::string& text :
       {std::string("UTC"), std::string("M..B"),
        std::string(context.log.kind == log_kind::evtx ? "EVTX" : "EVT"), sourcetype,
        std::string("Event Logged"), std::string(context.username), host, cleaned(event),
        mark_line_ends(cleaned(desc)), std::string("2"),
        cleaned(apply_alias(format, context.log.path)),
        inode_text(context.log.inode, format.base16),
        mark_line_ends(cleaned(notes_of(record, format, context))),
        std::string(context.program_name) + " (morvane)",
        "Record# " + std::to_string(record.record_number)}) {
    line += format.csv_separator + text;
  }
  return format.row_newline ? line + '\n' : line;
}

// Line ends in the name are kept, so a name with one breaks its line in two: meant, the form cannot
// keep them.
std::string body_line(const LogRecord& record, const write_context& context) {
  std::string name = "Event ID: " + std::to_string(record.event_id);
  if (!record.provider->empty()) name += '-' + *record.provider;
  if (context.allparams) {
    name += ", " + field_list(columns_of(record), "], ");
    cut_last(name, 2);  // of the ", " before it if there is no field
  }
  replace_char(name, '|', ';', false);
  std::string line = "0|" + name + '|' + std::to_string(context.log.inode) + "||0|0|0";
  for (int i = 0; i < 4; ++i) line += '|' + std::to_string(body_seconds(record.time));
  return line + '\n';
}

}  // namespace

void write_plain_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                          const output_format& format, const write_context& context,
                          bool& header_pending) {
  for (const LogRecord* record : records) {
    if (header_pending) {
      out << (format.output_bodyfile ? std::string(body_header) : timeline_header(format));
    }
    header_pending = false;
    out << (format.output_bodyfile ? body_line(*record, context)
                                   : timeline_line(*record, format, context));
  }
}

}  // namespace zanvik
