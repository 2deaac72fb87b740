#include "output/tables/plain_event_table.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "output/cell_text.h"
#include "output/path_alias.h"
#include "output/tables/table_engine.h"

namespace zanvik {
namespace {

using width_map = std::map<std::string, std::size_t>;

constexpr std::size_t longest_measured = 599;  // a longer value does not widen its column
constexpr std::size_t widest_field = 600;
constexpr std::size_t overwide_field = 20;  // width of a column whose name is wider than that

bool anomalous(const LogRecord& record) { return (record.flags & ~record_ordinary) != 0; }

// Everything that the first pass over the records finds.
struct table_plan {
  std::vector<column_map> fields;  // of each record
  width_map widths;
  std::size_t description_width = 0;
  std::size_t provider_width = 13;
  bool provider_seen = false;
};

void add_widths(width_map& widths, const column_map& fields) {
  for (const auto& [name, value] : fields) {
    std::size_t& width = widths.try_emplace(name, name.size()).first->second;
    if (value.size() <= longest_measured) width = std::max(width, value.size());
  }
}

// Gives the anomalous records with as many fields as `names` its names, position by position.
void reconcile(table_plan& plan, std::span<const LogRecord* const> records, column_map names) {
  for (std::size_t i = 0; i < records.size(); ++i) {
    column_map& fields = plan.fields[i];
    if (!anomalous(*records[i]) || fields.size() != names.size()) continue;
    auto value = fields.begin();
    for (auto& entry : names) entry.second = (value++)->second;
    fields = names;
  }
}

table_plan first_pass(std::span<const LogRecord* const> records) {
  table_plan plan;
  width_map anomalous_widths;
  column_map names;
  for (const LogRecord* record : records) {
    plan.fields.push_back(columns_of(*record));
    const column_map& fields = plan.fields.back();
    if (anomalous(*record)) {
      add_widths(anomalous_widths, fields);
    } else {
      if (names.empty()) names = fields;
      add_widths(plan.widths, fields);
      plan.description_width = std::max(plan.description_width, record->description->size());
    }
    if (!record->is_evtx) continue;
    plan.provider_seen = true;
    plan.provider_width = std::max(plan.provider_width, record->provider->size());
  }
  if (names.empty()) {
    plan.widths = anomalous_widths;
  } else {
    reconcile(plan, records, names);
  }
  return plan;
}

bool is_dropped(const std::string& name, const write_context& context) {
  return name == "Provider Name" || (context.inc_slack && name == "EventID");
}

std::vector<table_column> columns_of(const table_plan& plan, const output_format& format,
                                     const write_context& context) {
  std::vector<table_column> columns;
  const std::size_t date = format.date_format.size();
  const std::size_t time = format.time_format.size();
  add_column(columns, "Record#", 10, cell_plain, column_centred);
  add_column(columns, "EventID", 10, cell_plain, column_centred);
  if (format.pair_datetime) {
    add_column(columns, "Date [UTC]", date + time + 1, cell_plain, 0);
  } else {
    add_column(columns, "Date", date, cell_plain, 0);
    add_column(columns, "Time-UTC", time, cell_time_column, 0);
  }
  if (context.show_offsets) add_column(columns, "rec offset", 10, cell_plain, 0);
  if (context.inc_slack) add_column(columns, "del", 3, cell_plain, 0);
  add_column(columns, "Level (translated)", 18, cell_plain, 0);
  if (plan.description_width != 0) {
    const std::size_t width = std::max<std::size_t>(plan.description_width, 4);
    add_column(columns, "name", width, cell_plain, column_centred);
  }
  if (plan.provider_seen) add_column(columns, "Provider Name", plan.provider_width, cell_plain, 0);
  for (const auto& [name, width] : plan.widths) {
    if (!is_dropped(name, context)) {
      add_column(columns, name, width <= widest_field ? width : overwide_field, cell_plain, 0);
    }
  }
  add_column(columns, "event log", 11, cell_plain, column_centred);
  return columns;
}

// Fills the row's cells from left to right.
class row_filler {
 public:
  explicit row_filler(table_row& row) : row_(row) {}
  void number(std::uint64_t value, std::uint16_t kind, std::uint32_t flags) {
    at_ += static_cast<std::size_t>(set_number_cell(row_, at_, value, kind, flags));
  }
  void text(std::string_view value) {
    at_ += static_cast<std::size_t>(set_text_cell(row_, at_, value, cell_text, 0));
  }

 private:
  table_row& row_;
  std::size_t at_ = 0;
};

void fill_row(table_row& row, const LogRecord& record, const column_map& fields,
              const table_plan& plan, const output_format& format, const write_context& context) {
  row_filler fill(row);
  fill.number(record.record_number, cell_number64, cell_decimal | 4);
  fill.number(record.event_id & 0xffff, cell_number16, cell_decimal | 2);
  fill.number(record.time, format.pair_datetime ? cell_date_time_pair : cell_date_and_time, 1);
  if (context.show_offsets) fill.text(format_offset(record.file_offset, format.base16));
  if (context.inc_slack) fill.text((record.flags & record_starred) != 0 ? "*" : "");
  fill.text(level_text(record.is_evtx, record.level));
  if (plan.description_width != 0) fill.text(*record.description);
  if (plan.provider_seen) fill.text(*record.provider);
  for (const auto& [name, width] : plan.widths) {
    const auto found = fields.find(name);
    if (found == fields.end()) {
      fill.text({});  // of a dropped column too: the cells behind it move, which is meant
    } else if (!is_dropped(name, context)) {
      fill.text(found->second);
    }
  }
  fill.text(apply_alias(format, *record.extra_text));
}

}  // namespace

void write_plain_event_table(std::ostream& out, std::span<const LogRecord* const> records,
                             output_format& format, const write_context& context) {
  if (records.empty() || !format.output_csv) return;
  const table_plan plan = first_pass(records);
  const std::vector<table_column> columns = columns_of(plan, format, context);
  write_table_header(out, columns, format);
  table_row row(columns.size(), format.quoted_fields ? row_quoted : 0);
  for (std::size_t i = 0; i < records.size(); ++i) {
    if ((records[i]->flags & record_outside_range) && !context.inc_slack) continue;
    row.clear();
    fill_row(row, *records[i], plan.fields[i], plan, format, context);
    write_table_row(out, row, columns, format);
  }
}

}  // namespace zanvik
