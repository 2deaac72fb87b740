#include "sigma/rule_matches.h"

#include <algorithm>
#include <array>
#include <map>

#include "events/event_value.h"
#include "base/fold_case.h"

namespace zanvik::sigma {
namespace {

constexpr std::size_t logs_named = 3;

// Rules, paths and values may be anybody's text; a terminal must not get control characters from
// them.
void clean(std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F are controls too.
    const bool two =
        c == 0xc2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xa0;
    if (c < 0x20 || c == 0x7f || two) text[i] = ' ';
    if (two) text[++i] = ' ';
  }
}

// Rows of cells, each column as wide as its widest cell; the last one is not padded.
class text_table {
 public:
  explicit text_table(std::vector<std::string> header) { add(std::move(header)); }

  void add(std::vector<std::string> cells) {
    widths_.resize(std::max(widths_.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) {
      clean(cells[i]);
      widths_[i] = std::max(widths_[i], width(cells[i]));
    }
    rows_.push_back(std::move(cells));
  }

  void append(std::string& out) const {
    for (const auto& cells : rows_) {
      for (std::size_t i = 0; i < cells.size(); ++i) {
        out += cells[i];
        if (i + 1 < cells.size()) out.append(widths_[i] - width(cells[i]) + 2, ' ');
      }
      out += '\n';
    }
  }

 private:
  static std::size_t width(std::string_view text) {
    std::size_t characters = 0;
    for (std::size_t position = 0; position < text.size(); ++characters) {
      next_code_point(text, position);
    }
    return characters;
  }

  std::vector<std::vector<std::string>> rows_;
  std::vector<std::size_t> widths_;
};

std::string level_text(const rule& r) {
  return r.level == rule_level::none ? "-" : std::string(level_names[static_cast<int>(r.level)]);
}

std::string or_dash(const std::string& text) { return text.empty() ? "-" : text; }

}  // namespace

std::string time_text(std::uint64_t filetime) {
  std::array<char, 64> text{};
  return {text.data(), write_iso_time(text.data(), filetime)};
}

void rule_matches::add(std::size_t rule, std::uint64_t filetime, const std::string& log) {
  matches_of_rule& m = rules_[rule];
  ++total_;
  ++m.count;
  m.first = std::min(m.first, filetime);
  m.last = std::max(m.last, filetime);
  // Logs come one after the other.
  if (m.logs == 0 || m.last_log != log) {
    ++m.logs;
    m.last_log = log;
    if (m.named_logs.size() < logs_named) m.named_logs.push_back(log);
  }
}

void rule_matches::append_table(std::string& out) const {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    if (rules_[i].count != 0) order.push_back(i);
  }
  if (order.empty()) return;
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const rule &x = set_.rules[a].content, &y = set_.rules[b].content;
    if (x.level != y.level) return x.level > y.level;
    return x.title != y.title ? x.title < y.title : a < b;
  });
  text_table table({"level", "count", "first", "last", "rule", "id", "author", "logs"});
  for (const std::size_t i : order) {
    const rule& r = set_.rules[i].content;
    const matches_of_rule& m = rules_[i];
    std::string logs;
    for (const std::string& log : m.named_logs) logs += (logs.empty() ? "" : ", ") + log;
    if (m.logs > logs_named) logs += " and " + std::to_string(m.logs - logs_named) + " more";
    table.add({level_text(r), std::to_string(m.count), time_text(m.first), time_text(m.last),
               or_dash(r.title), or_dash(r.id), or_dash(r.author), logs});
  }
  table.append(out);
}

void append_rule_list(const rule_set& set, std::string& out) {
  text_table table({"state", "level", "status", "rule", "file", "reason"});
  for (const known_rule& known : set.rules) {
    const rule& r = known.content;
    table.add({std::string(name_of(known.state)), level_text(r), or_dash(r.status),
               or_dash(r.title), r.file, or_dash(known.reason)});
  }
  table.append(out);
}

namespace {

void append_head(std::uint64_t filetime, const rule& matched, std::string& out) {
  std::string line = time_text(filetime) + "  " + level_text(matched) + "  " +
                     or_dash(matched.title) + "  (" + or_dash(matched.id) + ", " +
                     or_dash(matched.author) + ")";
  clean(line);
  out += line + '\n';
}

}  // namespace

void append_details(const correlation_match& match, const rule& matched,
                    std::string_view completing_event, std::string& out) {
  append_head(match.event.time, matched, out);
  std::string line = std::to_string(match.events) + " events from " + time_text(match.first) +
                     " to " + time_text(match.last);
  for (const auto& [field, value] : match.group) line += ", " + field + ": " + value;
  clean(line);
  out += "  " + line + '\n';
  out += completing_event;
}

void append_details(const event_view& event, const rule& matched, std::string& out) {
  append_head(event.time(), matched, out);
  append_event_details(event, out);
}

void append_event_details(const event_view& event, std::string& out) {
  std::string line;
  std::string scratch;
  line = event.source().path + ", record " + std::to_string(event.header().record_number);
  for (const system_member member :
       {system_member::channel, system_member::event_id, system_member::computer}) {
    line += ", " + std::string(event.text(member, scratch));
  }
  clean(line);
  out += "  " + line + '\n';
  for (std::uint32_t i = 0; i < event.shape().fields.size(); ++i) {
    const event_field& field = event.shape().fields[i];
    if (field.group == field_group::system) continue;
    line = field.name + ": " + std::string(event.text(static_cast<std::int32_t>(i), scratch));
    clean(line);
    out += "  " + line + '\n';
  }
  out += '\n';
}

void append_hunt_stats(const rule_set& set, std::size_t compiled, const rule_matches& matches,
                       const hunt_counts& counts, std::string& out) {
  std::map<std::string_view, std::size_t> states;
  for (const known_rule& known : set.rules) ++states[name_of(known.state)];
  text_table numbers({"files", std::to_string(set.files)});
  numbers.add({"rules loaded", std::to_string(set.rules.size())});
  for (const auto& [state, count] : states) {
    numbers.add({"rules: " + std::string(state), std::to_string(count)});
  }
  numbers.add({"rules compiled", std::to_string(compiled)});
  numbers.add({"literals by", literal_engine_name()});
  numbers.add({"events", std::to_string(counts.events)});
  numbers.add({"matches", std::to_string(matches.total())});
  numbers.append(out);
  text_table by_rule({"matches", "rule", "id"});
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    const std::uint64_t count = matches.count_of(i);
    if (count != 0)
      by_rule.add(
          {std::to_string(count), set.rules[i].content.title, or_dash(set.rules[i].content.id)});
  }
  if (matches.total() != 0) by_rule.append(out);
  text_table channels({"events", "channel that no rule concerned"});
  for (const auto& [channel, count] : counts.unconcerned) {
    channels.add({std::to_string(count), or_dash(channel)});
  }
  if (!counts.unconcerned.empty()) channels.append(out);
}

}  // namespace zanvik::sigma
