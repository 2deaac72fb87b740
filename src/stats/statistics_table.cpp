// The statistics of a log as text.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "base/digits.h"
#include "base/limits.h"
#include "base/time_format.h"
#include "stats/log_statistics.h"

namespace zanvik {
namespace {

struct stats_column {
  std::string_view name;
  std::size_t width = 0;
};

constexpr std::size_t least_time_width = 9;
constexpr std::size_t separator_width = 3;  // of the key columns' items

std::string padding(std::size_t length, std::size_t width) {
  return std::string(width > length ? width - length : 0, ' ');
}

std::string decimal(std::uint64_t number) {
  std::string text;
  append_decimal(text, number);
  return text;
}

// Lines of one table.
class stats_table {
 public:
  stats_table(const LogStatistics& stats, std::ostream& out) : stats_(stats), out_(out) {
    const std::size_t date_width = std::max(least_time_width, stats.date_format.size());
    const std::size_t time_width = std::max(least_time_width, stats.time_format.size());
    columns_ = {{"event id", 8},           {"occurrences", 11},     {"from date", date_width},
                {"from time", time_width}, {"to date", date_width}, {"to time", time_width}};
  }

  void add_column(std::string_view name, std::size_t width) { columns_.push_back({name, width}); }

  void write_header() {
    std::string line;
    for (const stats_column& column : columns_) {
      if (!line.empty()) line += stats_.separator;
      line.append(column.name).append(padding(column.name.size(), column.width));
    }
    out_ << line << '\n';
  }

  // The cells of a count, followed by `more`.
  void write_row(std::string id, const EventCount& count,
                 const std::vector<std::string>& more = {}) {
    std::vector<std::string> cells{std::move(id), decimal(count.count)};
    append_time(cells, count.first_time);
    append_time(cells, count.last_time);
    cells.insert(cells.end(), more.begin(), more.end());
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i != 0) line += stats_.separator;
      line.append(padding(cells[i].size(), columns_[i].width)).append(cells[i]);
    }
    out_ << line << '\n';
  }

 private:
  void append_time(std::vector<std::string>& cells, std::uint64_t filetime) {
    std::string date;
    std::string time;
    (void)format_with_descriptor(date, time, qx::time(filetime, qx::type_time::filetime),
                                 stats_.descriptor);
    cells.push_back(std::move(date));
    cells.push_back(std::move(time));
  }

  const LogStatistics& stats_;
  std::ostream& out_;
  std::vector<stats_column> columns_;
};

std::string joined(const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i != 0) text += "; ";
    text += items[i].empty() ? "<null>" : items[i];
  }
  return text;
}

// Width of a key cell: each item with a separator, whatever separates them in the end.
std::size_t key_width(const std::vector<std::string>& items) {
  std::size_t width = 0;
  for (const std::string& item : items) width += item.size() + separator_width;
  return width;
}

void write_hist_tables(const LogStatistics& stats, std::ostream& out) {
  std::size_t values_width = 0;
  std::size_t fields_width = 0;
  std::size_t bytes = 0;
  std::size_t entries = 0;
  for (const auto& table : stats.hist_tables) {
    for (const auto& [key, entry] : table) {
      values_width = std::max(values_width, key_width(entry.key_values));
      fields_width = std::max(fields_width, key_width(entry.key_fields));
      bytes += key_width(entry.key_values) + key_width(entry.key_fields);
      ++entries;
    }
  }
  if (fields_width == 0) return;  // no entry in any table
  // One long value would make the rows of all entries as long.
  const std::size_t most_padding = limits::padding_at_least + limits::padding_per_byte * bytes;
  if (values_width + fields_width > most_padding / entries) values_width = fields_width = 0;
  out << "\n--- filter stats --- [refer to filter# for details]\n";
  constexpr std::size_t filter_width = 7;
  stats_table lines(stats, out);
  lines.add_column("filter#", filter_width);
  lines.add_column("key values", values_width);
  lines.add_column("key fields", fields_width);
  lines.write_header();
  for (const auto& table : stats.hist_tables) {
    for (const auto& [key, entry] : table) {
      lines.write_row(decimal(entry.seen.event_id), entry.seen,
                      {decimal(static_cast<std::uint64_t>(entry.filter_number)),
                       joined(entry.key_values), joined(entry.key_fields)});
    }
  }
}

}  // namespace

void write_statistics(const LogStatistics& stats, std::ostream& out) {
  out << "log: " << stats.log_path << "\nformat: "
      << (stats.is_evtx ? "evtx [newer Vista/Win7 format]" : "evt [older XP format]") << '\n';
  if (!stats.log_type.empty()) out << "type: " << stats.log_type << '\n';
  if (stats.all.count == 0) {
    out << "No events found in log OR log skipped based on filter selected\n\n";
    return;
  }
  out << "\n--- overall log stats ----\n";
  stats_table lines(stats, out);
  lines.write_header();
  lines.write_row("all", stats.all);
  for (const auto& [id, count] : stats.per_event) lines.write_row(decimal(id), count);
  write_hist_tables(stats, out);
  out << '\n';
}

}  // namespace zanvik
