#include "output/tables/table_layout.h"

#include <algorithm>
#include <functional>

#include "base/limits.h"
#include "output/prefetch.h"

namespace zanvik {
namespace {

constexpr std::size_t longest_measured = 599;  // a longer value does not widen its column
constexpr std::size_t widest_field = 600;
constexpr std::size_t overwide_field = 20;  // width of a column whose name is longer than that

// What the first pass finds out about the records.
class survey {
 public:
  survey(table_layout& layout, bool measure) : layout_(layout), measure_(measure) {}

  void add(const LogRecord& record) {
    const std::size_t number = layout_.shapes.of(record);
    if (number == uses_.size()) add_use(record);
    ++uses_[number].records;
    ++records_;
    if (measure_ && record.shape->value_count != 0) measure_values(record, uses_[number].longest);
    if (record.is_evtx) {
      layout_.has_provider = true;
      provider_width = std::max(provider_width, record.provider->size());
    }
    // The captions of anomalous records do not count.
    if (record.description->size() > description_width && !is_anomalous(record)) {
      description_width = record.description->size();
    }
  }
  // Fills the layout's `fields`.
  void join_fields(bool drop_event_id);
  // How many fields the table may have.
  std::size_t most_fields() const;

  // How far the fields of a row may be padded in total.
  std::size_t most_padding() const;

  std::size_t provider_width = 13;
  std::size_t description_width = 0;

 private:
  struct shape_use {
    const record_shape* shape;
    bool anomalous;
    std::size_t records = 0;
    std::vector<std::size_t> longest;  // of the values of each column, if they count
  };

  void add_use(const LogRecord& record);
  void measure_values(const LogRecord& record, std::vector<std::size_t>& longest);

  table_layout& layout_;
  bool measure_;
  std::size_t records_ = 0;
  std::size_t value_bytes_ = 0;  // of all of them, as far as they are measured
  std::vector<shape_use> uses_;
};

void survey::add_use(const LogRecord& record) {
  const record_shape& shape = *record.shape;
  uses_.push_back({&shape, is_anomalous(record), 0, {}});
  if (!is_anomalous(record) && !layout_.name_giver && !shape.columns.empty()) {
    layout_.name_giver = &shape;
  }
  if (!measure_) return;
  std::vector<std::size_t>& longest = uses_.back().longest;
  longest.reserve(shape.columns.size());
  for (const shape_column& column : shape.columns) {
    const std::size_t length = column.literal ? column.text.size() : 0;
    longest.push_back(length <= longest_measured ? length : 0);
  }
}

void survey::measure_values(const LogRecord& record, std::vector<std::size_t>& longest) {
  cell_reader cells(record.values);
  const std::vector<shape_column>& columns = record.shape->columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].literal) continue;
    const std::size_t length = cells.next().text.size();
    value_bytes_ += length;
    if (length > longest[i] && length <= longest_measured) longest[i] = length;
  }
}

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

// Cells are the cost, so the columns of a table with fewer records than the limit may be more. Not
// if all records have one shape: their layout is used for tables of any length.
std::size_t survey::most_fields() const {
  if (uses_.size() < 2) return limits::table_columns;
  std::size_t records = 0;
  for (const shape_use& use : uses_) records += use.records;
  return std::max(limits::table_columns, limits::table_columns * limits::table_columns / records);
}

std::size_t survey::most_padding() const {
  std::size_t bytes = value_bytes_;
  for (const shape_use& use : uses_) bytes += use.records * use.shape->repeated_bytes;
  return (limits::padding_at_least + limits::padding_per_byte * bytes) /
         std::max(records_, std::size_t{1});
}

void survey::join_fields(bool drop_event_id) {
  const bool of_anomalous = !layout_.name_giver;
  std::vector<field_column>& fields = layout_.fields;
  for (const shape_use& use : uses_) {
    if (use.anomalous != of_anomalous) continue;
    for (std::size_t i = 0; i < use.shape->columns.size(); ++i) {
      const std::string_view name = use.shape->columns[i].name;
      const std::size_t width = measure_ ? std::max(name.size(), use.longest[i]) : 0;
      fields.push_back({name, width, use.records, false});
    }
  }
  merge_by_name(fields);
  drop_rarest(fields, most_fields());
  for (field_column& field : fields) {
    field.dropped = field.name == "Provider Name" || (drop_event_id && field.name == "EventID");
  }
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

void add_columns(table_layout& layout, const survey& found, const output_format& format,
                 const write_context& context) {
  column_list list(layout.columns, !format.no_whitespace);
  list.add("Record#", 10, true);
  list.add("EventID", 10, true);
  add_time_columns(list, format);
  if (context.show_offsets) list.add("rec offset", 10);
  if (context.inc_slack) list.add("del", 3);
  list.add("Level (translated)", 18);
  if (layout.has_description) {
    list.add("name", std::max<std::size_t>(found.description_width, 4), true);
  }
  if (layout.has_provider) list.add("Provider Name", found.provider_width);
  layout.first_field = layout.columns.size();
  const std::size_t most_padding = std::min(limits::table_padding, found.most_padding());
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

std::size_t shape_index::find(std::uint64_t shape_id, bool anomalous) {
  const auto [at, added] = numbers_[anomalous].try_emplace(shape_id, count_);
  if (added) ++count_;
  return at->second;
}

table_layout lay_out_table(std::span<const LogRecord* const> records, const output_format& format,
                           const write_context& context) {
  table_layout layout;
  survey found(layout, !format.no_whitespace);
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (i + records_ahead < records.size()) {
      prefetch_bytes(records[i + records_ahead], sizeof(LogRecord));
    }
    found.add(*records[i]);
  }
  found.join_fields(context.inc_slack);
  layout.has_description = found.description_width != 0;
  add_columns(layout, found, format, context);
  return layout;
}

}  // namespace zanvik
