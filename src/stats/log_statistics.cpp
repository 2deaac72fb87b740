#include "stats/log_statistics.h"

#include <algorithm>
#include <optional>

#include "base/text.h"
#include "base/time_format.h"

namespace zanvik {
namespace {

// The value of the record's column number `column`.
std::string_view column_value(const LogRecord& record, std::size_t column) {
  const std::vector<shape_column>& columns = record.shape->columns;
  if (columns[column].literal) return columns[column].text;
  cell_reader cells(record.values);
  std::string_view text;
  for (std::size_t i = 0; i <= column; ++i) {
    if (!columns[i].literal) text = cells.next().text;
  }
  return text;
}

// The value under exactly that name, else under the first name that is `lower` in lower case.
std::optional<std::string_view> find_column_value(const LogRecord& record, const std::string& name,
                                                  const std::string& lower) {
  const std::vector<shape_column>& columns = record.shape->columns;
  const auto value_of = [&](auto found) {
    return column_value(record, static_cast<std::size_t>(found - columns.begin()));
  };
  const auto exact = std::find_if(columns.begin(), columns.end(),
                                  [&](const auto& column) { return column.name == name; });
  if (exact != columns.end()) return value_of(exact);
  const auto found = std::find_if(columns.begin(), columns.end(), [&](const auto& column) {
    return to_lower(column.name) == lower;
  });
  if (found != columns.end()) return value_of(found);
  return std::nullopt;
}

bool id_fits(const ReportCommand& command, const LogRecord& record) {
  // A legacy ID has 16 bits.
  return record.is_evtx ? command.event_id == record.event_id
                        : (command.event_id & 0xffff) == record.event_id;
}

}  // namespace

void EventCount::add(std::uint64_t time) {
  ++count;
  first_time = std::min(first_time, time);
  last_time = std::max(last_time, time);
}

void EventCount::add(const EventCount& part) {
  count += part.count;
  first_time = std::min(first_time, part.first_time);
  last_time = std::max(last_time, part.last_time);
}

void init_statistics(LogStatistics& stats, std::string_view path, std::string_view type,
                     bool is_evtx, std::size_t hist_count, std::string_view date_format,
                     std::string_view time_format) {
  stats = {};
  stats.log_path = path;
  stats.log_type = type;
  stats.is_evtx = is_evtx;
  if (!date_format.empty()) stats.date_format = date_format;
  if (!time_format.empty()) stats.time_format = time_format;
  (void)build_format_descriptor(stats.descriptor, stats.date_format, stats.time_format, false);
  stats.hist_tables.resize(hist_count);
}

void count_record(LogStatistics& stats, std::uint64_t event_id, std::uint64_t time) {
  stats.all.add(time);
  EventCount*& recent = stats.recent[event_id % stats.recent.size()];
  if (!recent || recent->event_id != event_id) {
    recent = &stats.per_event[event_id];
    recent->event_id = event_id;
  }
  recent->add(time);
}

void count_hist(LogStatistics& stats, const ReportCommand& command, const LogRecord& record) {
  if (!command.has_hist || command.hist_fields.empty() || !id_fits(command, record)) return;
  const auto table = static_cast<std::size_t>(command.hist_index);
  if (command.hist_index < 0 || table >= stats.hist_tables.size()) return;
  std::string key;
  std::vector<std::string> values;
  for (std::size_t i = 0; i < command.hist_fields.size(); ++i) {
    const auto value =
        find_column_value(record, command.hist_fields[i], command.hist_fields_lower[i]);
    if (!value) return;
    values.emplace_back(*value);
    key.append(*value).push_back('_');
  }
  HistEntry& entry = stats.hist_tables[table][key];
  if (entry.seen.count == 0) {
    entry.seen.event_id = record.event_id;
    entry.key_fields = command.hist_fields;
    entry.key_values = std::move(values);
    entry.filter_number = command.hist_index;
  }
  entry.seen.add(record.time);
}

void count_hist_from(LogStatistics& stats, const command_refs& commands, std::size_t first,
                     const LogRecord& record) {
  if (stats.hist_tables.empty()) return;
  for (std::size_t i = first; i < commands.size(); ++i) count_hist(stats, commands[i], record);
}

void add_statistics(LogStatistics& stats, const LogStatistics& part) {
  if (stats.log_type.empty()) stats.log_type = part.log_type;
  stats.all.add(part.all);
  for (const auto& [event_id, count] : part.per_event) {
    EventCount& sum = stats.per_event[event_id];
    sum.event_id = event_id;
    sum.add(count);
  }
  for (std::size_t i = 0; i < part.hist_tables.size(); ++i) {
    for (const auto& [key, entry] : part.hist_tables[i]) {
      const auto [at, added] = stats.hist_tables[i].try_emplace(key, entry);
      if (!added) at->second.seen.add(entry.seen);
    }
  }
}

}  // namespace zanvik
