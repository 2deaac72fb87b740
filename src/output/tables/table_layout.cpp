#include "output/tables/table_layout.h"

#include <algorithm>
#include <functional>

#include "base/limits.h"

namespace zanvik {
namespace {

constexpr std::size_t widest_field = 600;
constexpr std::size_t overwide_field = 20;  // width of a column whose name is longer than that

// Sorts the fields by name and keeps one of each name, as wide as the widest.
void merge_by_name(std::vector<field_column>& fields) {
  std::sort(fields.begin(), fields.end(), [](const field_column& a, const field_column& b) {
    const int order = a.name.compare(b.name);
    return order != 0 ? order < 0 : a.width > b.width;
  });
  std::size_t kept = 0;
  for (const field_column& field : fields) {
    if (kept != 0 && fields[kept - 1].name == field.name) {
      fields[kept - 1].records += field.records;
    } else {
      fields[kept++] = field;
    }
  }
  fields.resize(kept);
}

// Keeps `most` fields, those of most records; among equals the first.
void drop_rarest(std::vector<field_column>& fields, std::size_t most) {
  if (fields.size() <= most) return;
  std::vector<std::size_t> counts;
  for (const field_column& field : fields) counts.push_back(field.records);
  const auto last = counts.begin() + static_cast<std::ptrdiff_t>(most) - 1;
  std::nth_element(counts.begin(), last, counts.end(), std::greater<>());
  const std::size_t least = *last;
  auto room = static_cast<std::size_t>(std::count(counts.begin(), last + 1, least));
  std::erase_if(fields, [&](const field_column& field) {
    if (field.records != least) return field.records < least;
    if (room == 0) return true;
    --room;
    return false;
  });
}

// How many fields the table may have. Cells are the cost, so the columns of a table with fewer
// records than the limit may be more. Not if all records have one shape: their layout is used for
// tables of any length.
std::size_t most_fields(const table_survey& found) {
  if (found.uses().size() < 2) return limits::table_columns;
  return std::max(limits::table_columns,
                  limits::table_columns * limits::table_columns / found.records());
}

// How far the fields of a row may be padded in total.
std::size_t most_row_padding(const table_survey& found) {
  std::size_t bytes = found.value_bytes();
  for (const table_survey::shape_use& use : found.uses()) {
    bytes += use.records * use.shape->repeated_bytes;
  }
  return (limits::padding_at_least + limits::padding_per_byte * bytes) /
         std::max(found.records(), std::size_t{1});
}

std::vector<field_column> joined_fields(const table_survey& found, bool drop_event_id) {
  const bool of_anomalous = !found.name_giver();
  std::vector<field_column> fields;
  for (const table_survey::shape_use& use : found.uses()) {
    if (use.anomalous != of_anomalous) continue;
    for (std::size_t i = 0; i < use.shape->columns.size(); ++i) {
      const std::string_view name = use.shape->columns[i].name;
      const std::size_t width = found.measures() ? std::max(name.size(), use.longest[i]) : 0;
      fields.push_back({name, width, use.records, false});
    }
  }
  merge_by_name(fields);
  drop_rarest(fields, most_fields(found));
  for (field_column& field : fields) {
    field.dropped = field.name == "Provider Name" || (drop_event_id && field.name == "EventID");
  }
  return fields;
}

// Adds columns with their widths, which count only in a padded table.
class column_list {
 public:
  column_list(std::vector<table_column>& columns, bool padded)
      : columns_(columns), padded_(padded) {}
  void add(std::string_view name, std::size_t width, bool centred = false, bool is_time = false) {
    columns_.push_back({std::string(name), padded_ ? width : 0, centred, is_time});
  }

 private:
  std::vector<table_column>& columns_;
  bool padded_;
};

void add_time_columns(column_list& list, const output_format& format) {
  const std::size_t date = format.date_format.size();
  const std::size_t time = format.time_format.size();
  if (format.pair_datetime) {
    list.add("Date [UTC]", date + time + 1);
  } else {
    list.add("Date", date);
    list.add("Time-UTC", time, false, true);
  }
}

void add_columns(table_layout& layout, const table_survey& found, const output_format& format,
                 const write_context& context) {
  column_list list(layout.columns, !format.no_whitespace);
  list.add("Record#", 10, true);
  list.add("EventID", 10, true);
  add_time_columns(list, format);
  if (context.show_offsets) list.add("rec offset", 10);
  if (context.inc_slack) list.add("del", 3);
  list.add("Level (translated)", 18);
  if (layout.has_description) {
    list.add("name", std::max<std::size_t>(found.description_width(), 4), true);
  }
  if (layout.has_provider) list.add("Provider Name", found.provider_width());
  layout.first_field = layout.columns.size();
  const std::size_t most_padding = std::min(limits::table_padding, most_row_padding(found));
  std::size_t padding = 0;
  for (const field_column& field : layout.fields) {
    if (field.dropped) continue;
    const std::size_t width = field.width <= widest_field ? field.width : overwide_field;
    padding += width;
    list.add(field.name, padding <= most_padding ? width : 0);
  }
  list.add("event log", 11, true);
}

}  // namespace

table_layout lay_out_table(const table_survey& found, const output_format& format,
                           const write_context& context) {
  table_layout layout;
  layout.fields = joined_fields(found, context.inc_slack);
  layout.name_giver = found.name_giver();
  layout.has_provider = found.has_provider();
  layout.has_description = found.description_width() != 0;
  add_columns(layout, found, format, context);
  return layout;
}

table_layout lay_out_table(std::span<const LogRecord* const> records, const output_format& format,
                           const write_context& context) {
  table_survey found(!format.no_whitespace);
  found.add(records);
  return lay_out_table(found, format, context);
}

}  // namespace zanvik
