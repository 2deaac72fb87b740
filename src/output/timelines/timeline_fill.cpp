#include "output/timelines/timeline_fill.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "base/text.h"
#include "output/cell_text.h"
#include "output/path_alias.h"

namespace zanvik {
namespace {

std::string value_of(const column_map& fields, const std::string& name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

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

}  // namespace

timeline_row timeline_row_of(const LogRecord& record, const output_format& format,
                             const write_context& context) {
  timeline_row row;
  prepare_timeline_row(row, format, context);
  row.times = {record.time, 0, 0, record.time};
  row.type = "Event Logged";
  const column_map fields = columns_of(record);
  if (row.sourcetype.empty() && context.log_is_evtx) row.sourcetype = value_of(fields, "Channel");
  row.short_text = "Event ID: " + std::to_string(record.event_id);
  if (!record.provider->empty()) row.short_text += " : " + *record.provider;
  row.desc = field_list(fields, "] ");
  cut_last(row.desc, 1);
  row.filename = apply_alias(format, *record.extra_text);
  set_row_inode(row, context.log_reserved);
  row.extra = "Record# " + std::to_string(record.record_number);
  row.notes = notes_of(record, format, context);
  row.source = context.log_is_evtx ? "EVTX" : "EVT";
  row.host = value_of(fields, context.log_is_evtx ? "Computer" : "computer name");
  return row;
}

body_row body_row_of(const LogRecord& record, const write_context& context) {
  body_row row;
  row.modify_time = row.access_time = row.mft_time = row.create_time = body_seconds(record.time);
  row.name = "Event ID: " + std::to_string(record.event_id);
  if (!record.provider->empty()) row.name += '-' + *record.provider;
  if (context.allparams) {
    row.name += ", " + field_list(columns_of(record), "], ");
    cut_last(row.name, 2);  // of the ", " in front where there is no field
  }
  row.inode = context.log_reserved;
  return row;
}

void write_plain_timeline(std::ostream& out, std::span<const LogRecord* const> records,
                          output_format& format, const write_context& context) {
  for (const LogRecord* record : records) {
    if (format.output_bodyfile) {
      write_body_row(format.header_pending, out, body_row_of(*record, context));
    } else {
      write_timeline_row(format.header_pending, out, timeline_row_of(*record, format, context));
    }
  }
}

}  // namespace zanvik
