#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "output/cell_text.h"
#include "output/path_alias.h"
#include "output/time_cells.h"
#include "reference/plain_output.h"

namespace zanvik {
namespace {

bool anomalous(const LogRecord& record) { return (record.flags & ~record_ordinary) != 0; }

struct column {
  std::string name;
  std::size_t width = 0;
  bool centred = false;
  bool is_time = false;
};

class plain_table {
 public:
  plain_table(std::span<const LogRecord* const> records, const output_format& format,
              const write_context& context)
      : format_(format), context_(context), times_(format) {
    survey(records);
    add_columns();
  }

  std::string header() const;
  std::string row(const LogRecord& record, std::size_t number);

 private:
  void survey(std::span<const LogRecord* const> records);
  void add_columns();
  bool is_dropped(const std::string& name) const {
    return name == "Provider Name" || (context_.inc_slack && name == "EventID");
  }
  std::string padded(std::string text, std::size_t width) const {
    if (!format_.no_whitespace && text.size() < width) text.resize(width, ' ');
    return text;
  }
  std::string text_cell(std::string text, std::size_t width) const;

  const output_format& format_;
  const write_context& context_;
  time_cells times_;
  std::vector<column_map> fields_;  // of each record
  std::map<std::string, std::size_t> widths_;
  std::size_t description_width_ = 0;
  std::size_t provider_width_ = 13;
  bool has_provider_ = false;
  std::vector<column> columns_;
};

void plain_table::survey(std::span<const LogRecord* const> records) {
  column_map names;  // of the first ordinary record with a field
  std::map<std::string, std::size_t> widths[2];
  for (const LogRecord* record : records) {
    fields_.push_back(columns_of(*record));
    if (!anomalous(*record)) {
      if (names.empty()) names = fields_.back();
      description_width_ = std::max(description_width_, record->description->size());
    }
    for (const auto& [name, value] : fields_.back()) {
      auto& width = widths[anomalous(*record)].try_emplace(name, name.size()).first->second;
      if (value.size() < 600) width = std::max(width, value.size());
    }
    if (!record->is_evtx) continue;
    has_provider_ = true;
    provider_width_ = std::max(provider_width_, record->provider->size());
  }
  widths_ = widths[names.empty()];
  // Anomalous records with as many fields get the names.
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (!anomalous(*records[i]) || fields_[i].size() != names.size()) continue;
    column_map renamed = names;
    auto value = fields_[i].begin();
    for (auto& entry : renamed) entry.second = (value++)->second;
    fields_[i] = renamed;
  }
}

void plain_table::add_columns() {
  const std::size_t date = format_.date_format.size(), time = format_.time_format.size();
  columns_ = {{"Record#", 10, true}, {"EventID", 10, true}};
  if (format_.pair_datetime) {
    columns_.push_back({"Date [UTC]", date + time + 1});
  } else {
    columns_.push_back({"Date", date});
    columns_.push_back({"Time-UTC", time, false, true});
  }
  if (context_.show_offsets) columns_.push_back({"rec offset", 10});
  if (context_.inc_slack) columns_.push_back({"del", 3});
  columns_.push_back({"Level (translated)", 18});
  if (description_width_ != 0) {
    columns_.push_back({"name", std::max<std::size_t>(description_width_, 4), true});
  }
  if (has_provider_) columns_.push_back({"Provider Name", provider_width_});
  for (const auto& [name, width] : widths_) {
    if (!is_dropped(name)) columns_.push_back({name, width <= 600 ? width : 20});
  }
  columns_.push_back({"event log", 11, true});
}

std::string plain_table::header() const {
  std::string line;
  for (const auto& [name, width, centred, is_time] : columns_) {
    if (&name != &columns_.front().name) line += format_.csv_separator;
    if (is_time && format_.pad_fields) line += ' ';
    const bool moved = centred && !format_.no_whitespace && width > name.size();
    line += padded(std::string(moved ? (width - name.size()) / 2 : 0, ' ') + name, width);
  }
  return line + '\n';
}

std::string plain_table::text_cell(std::string text, std::size_t width) const {
  if (format_.quoted_fields && !is_braced_list(text)) text = '"' + text + '"';
  if (!format_.quoted_fields && format_.separator_char != 0) {
    std::replace(text.begin(), text.end(), format_.separator_char, format_.separator_substitute);
  }
  return padded(mark_line_ends(text), width);
}

std::string plain_table::row(const LogRecord& record, std::size_t number) {
  std::vector<std::string> cells;
  const auto width = [&] { return columns_[std::min(cells.size(), columns_.size() - 1)].width; };
  const auto add_text = [&](std::string_view text) {
    cells.push_back(text_cell(std::string(text), width()));
  };
  for (const std::uint64_t value : {record.record_number, record.event_id & 0xffff}) {
    const std::string digits = std::to_string(value);
    cells.push_back(padded("", width() - std::min(width(), digits.size())) + digits);
  }
  times_.read(record.time);
  const std::string blank = format_.pad_fields ? " " : "";
  if (format_.pair_datetime) {
    cells.push_back((format_.no_whitespace ? "" : blank) +
                    padded(std::string(times_.date()), width()) + ' ' + std::string(times_.time()));
  } else {
    cells.push_back(padded(std::string(times_.date()), width()));
    cells.push_back(blank + padded(std::string(times_.time()), width()));
  }
  if (context_.show_offsets) add_text(format_offset(record.file_offset, format_.base16));
  if (context_.inc_slack) add_text((record.flags & record_starred) != 0 ? "*" : "");
  add_text(level_text(record.is_evtx, record.level));
  if (description_width_ != 0) add_text(*record.description);
  if (has_provider_) add_text(*record.provider);
  const column_map& fields = fields_[number];
  for (const auto& entry : widths_) {
    const auto found = fields.find(entry.first);
    if (found == fields.end()) {
      add_text({});  // for a dropped column too: the cells after it move, which is meant
    } else if (!is_dropped(entry.first)) {
      add_text(found->second);
    }
  }
  add_text(apply_alias(format_, context_.log.path));
  cells.resize(columns_.size());  // what moved past the end is dropped
  std::string line;
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) line += format_.csv_separator;
    line += cell;
  }
  return format_.row_newline ? line + '\n' : line;
}

}  // namespace

void write_plain_tables(std::ostream& out, std::span<const LogRecord* const> records,
                        const output_format& format, const write_context& context) {
  std::map<std::pair<std::uint64_t, std::string>, std::vector<const LogRecord*>> groups;
  for (const LogRecord* record : records) {
    groups[{record->event_id, *record->provider}].push_back(record);
  }
  bool first = true;
  for (const auto& [key, group] : groups) {
    if (!first) out << '\n';
    first = false;
    if (!format.output_csv) continue;
    plain_table table(group, format, context);
    out << table.header();
    for (std::size_t i = 0; i < group.size(); ++i) {
      if ((group[i]->flags & record_outside_range) && !context.inc_slack) continue;
      out << table.row(*group[i], i);
    }
  }
}

}  // namespace zanvik
