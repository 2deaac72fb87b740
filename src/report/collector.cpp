#include "report/collector.h"

#include <algorithm>
#include <charconv>

#include "report/cell_values.h"
#include "report/page_text.h"
#include "report/report_limits.h"

namespace zanvik {
namespace {

constexpr report_column given[given_columns] = {
    {"computer", "Computer"}, {"what", "Event"}, {"mark", "Mark"}};

constexpr report_column match_columns[] = {
    {"level", "Level"},       {"rule", "Rule"}, {"techniques", "Techniques"},
    {"event_id", "Event ID"}, {"data", "Data"}, {"rule_id", "Rule's ID"}};

report_table table_of(const question& asked) {
  report_table table{asked.name, asked.title, asked.group, {}, false};
  table.columns.assign(std::begin(given), std::end(given));
  for (const question_column& column : asked.columns) {
    table.columns.push_back({column.name, column.label});
  }
  table.lists_all_kinds = std::any_of(
      asked.sources.begin(), asked.sources.end(),
      [&](const question_source& source) { return source.what != asked.sources.front().what; });
  return table;
}

std::uint32_t number_of_group(std::string_view name) {
  const auto groups = question_groups();
  return static_cast<std::uint32_t>(std::find(groups.begin(), groups.end(), name) - groups.begin());
}

std::uint64_t number_in(std::string_view text, std::uint64_t otherwise) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number != 0 ? number
                                                                                 : otherwise;
}

bool is_script_table(const question& asked) { return asked.name == "script_blocks"; }

}  // namespace

report_collector::report_collector()
    : rows_(report_limits::rows, report_limits::text_bytes), host_("[none]") {
  for (const question& asked : questions()) {
    tables_.push_back(table_of(asked));
    groups_.push_back(number_of_group(asked.group));
  }
  report_table matches{"matches", "Rules that matched", "", {}, false};
  matches.columns.assign(std::begin(given), std::end(given));
  matches.columns.insert(matches.columns.end(), std::begin(match_columns), std::end(match_columns));
  tables_.push_back(std::move(matches));
  for (const report_table& table : tables_) rows_.add_table(table.columns.size());
}

std::string_view report_collector::host_of(const event_view& event) {
  const std::string_view computer = event.text(system_member::computer, scratch_);
  if (sequence_ == 1 || computer != computer_) {
    computer_ = computer;
    host_ = computer.empty() ? "[none]" : visible(computer, 256);
    host_number_ = counts_.host_number(host_);
  }
  return host_;
}

row_place report_collector::place_of(const event_view& event) const {
  return {event.time(), sequence_, event.header().record_number, logs_ - 1};
}

void report_collector::on_event(const event_view& event) {
  ++sequence_;
  const row_place place = place_of(event);
  host_of(event);
  std::uint32_t group = no_group;
  for (const question_match& match : reader_.matches(event)) {
    group = groups_[match.number];
    if (is_script_table(match.asked())) {
      add_script(event, match, place);
    } else {
      add_row(event, match, place);
    }
  }
  counts_.add(host_number_, place.time, group);
  ++log_events_.events;
  if (place.time == 0) return;
  log_events_.first = log_events_.first == 0 ? place.time : std::min(log_events_.first, place.time);
  log_events_.last = std::max(log_events_.last, place.time);
}

void report_collector::add_row(const event_view& event, const question_match& match,
                               const row_place& place) {
  cells_.resize(given_columns + match.columns());
  for (std::string& cell : cells_) cell.clear();
  cells_[host_column] = host_;
  cells_[what_column] = match.source().what;
  cells_[mark_column] = mark_text(event.header().flags);
  for (std::size_t i = 0; i < match.columns(); ++i) {
    append_cell_value(cells_[given_columns + i], match.asked().columns[i],
                      reader_.text(event, match, i));
  }
  complete_cells(match.asked(), std::span(cells_).subspan(given_columns));
  views_.assign(cells_.begin(), cells_.end());
  rows_.add(match.number, place, views_);
}

void report_collector::add_script(const event_view& event, const question_match& match,
                                  const row_place& place) {
  script_part part;
  std::string path, id, user, mark = mark_text(event.header().flags);
  for (std::size_t i = 0; i < match.columns(); ++i) {
    const std::string_view name = match.asked().columns[i].name;
    const std::string_view text = reader_.text(event, match, i);
    if (name == "path") path = visible(text);
    if (name == "script_block_id") id = visible(text);
    if (name == "sid") user = visible(text);
    if (name == "part") part.number = number_in(text, 1);
    if (name == "parts") part.total = number_in(text, 1);
    if (name == "script") scratch_ = text;
  }
  part.host = host_;
  part.path = path;
  part.block_id = id;
  part.user = user;
  part.mark = mark;
  part.text = scratch_;
  scripts_.add(part, place);
}

// The rows of the table whose question joins events.
void report_collector::add_scripts() {
  for (std::size_t number = 0; number < questions().size(); ++number) {
    const question& asked = questions()[number];
    if (!is_script_table(asked)) continue;
    for (const script_block& block : scripts_.blocks()) {
      const std::string text = block.joined(), parts = block.parts_text();
      views_.assign({block.host, asked.sources.front().what, block.mark});
      for (const question_column& column : asked.columns) {
        views_.push_back(column.name == "script"            ? std::string_view(text)
                         : column.name == "path"            ? std::string_view(block.path)
                         : column.name == "script_block_id" ? std::string_view(block.block_id)
                         : column.name == "parts"           ? std::string_view(parts)
                         : column.name == "sid"             ? std::string_view(block.user)
                                                            : std::string_view());
      }
      rows_.add(number, block.place, views_);
    }
  }
}

void report_collector::add_match(const event_view& event, const matched_rule& rule) {
  std::string id;
  const std::string host(host_of(event));
  const std::string event_id(event.text(system_member::event_id, id));
  const std::string mark = mark_text(event.header().flags), data = data_text(event);
  const std::string level = visible(rule.level), title = visible(rule.title),
                    tags = visible(rule.tags), rule_id = visible(rule.id);
  views_.assign({host, "event", mark, level, title, tags, event_id, data, rule_id});
  rows_.add(tables_.size() - 1, place_of(event), views_);
}

void report_collector::add_match(std::uint64_t filetime, std::uint32_t log,
                                 const matched_rule& rule, std::string_view details) {
  const std::string level = visible(rule.level), title = visible(rule.title),
                    tags = visible(rule.tags), rule_id = visible(rule.id), data = visible(details);
  views_.assign({"", "events together", "", level, title, tags, "", data, rule_id});
  rows_.add(tables_.size() - 1, {filetime, ++sequence_, 0, log}, views_);
}

void report_collector::finish() {
  add_scripts();
  rows_.finish();
}

}  // namespace zanvik
