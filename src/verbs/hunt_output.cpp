#include "verbs/hunt_output.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "export/line_text.h"
#include "sigma/rule_matches.h"

namespace zanvik {
namespace {

constexpr std::array<std::string_view, 3> formats{"jsonl", "csv", "timesketch"};

std::string json_text(std::string_view text) {
  std::string out;
  append_json_text(out, text);
  return out;
}

// The members of a rule, each name with `prefix` in front.
std::string json_members(const sigma::rule& r, std::string_view prefix) {
  std::string out;
  const auto member = [&](std::string_view name, std::string_view json) {
    out += out.empty() ? "\"" : ",\"";
    out.append(prefix).append(name).append("\":").append(json);
  };
  std::string tags = "[";
  for (const std::string& tag : r.tags) tags += (tags.size() > 1 ? "," : "") + json_text(tag);
  member("id", json_text(r.id));
  member("title", json_text(r.title));
  member("level", json_text(sigma::level_names[static_cast<std::size_t>(r.level)]));
  member("status", json_text(r.status));
  member("tags", tags + "]");
  member("author", json_text(r.author));
  member("file", json_text(r.file));
  return out;
}

void append_cell(std::string& out, std::string_view text, bool raw) {
  out += ',';
  append_csv_cell(out, text, cell_quotes::always, raw);
}

std::string table_cells(const sigma::rule& r, bool raw) {
  std::string out, tags;
  for (const std::string& tag : r.tags) tags += (tags.empty() ? "" : "; ") + tag;
  for (const std::string_view text :
       {std::string_view(r.id), std::string_view(r.title),
        sigma::level_names[static_cast<std::size_t>(r.level)], std::string_view(r.status),
        std::string_view(tags), std::string_view(r.author), std::string_view(r.file)}) {
    append_cell(out, text, raw);
  }
  return out;
}

constexpr std::string_view table_header =
    ",rule_id,rule_title,rule_level,rule_status,rule_tags,rule_author,rule_file";
constexpr std::string_view correlation_header =
    ",correlation_first,correlation_last,correlation_events,correlation_group";
constexpr std::string_view no_correlation = ",,,,";

const form_name* find_form(std::string_view format) {
  for (const form_name& known : form_names()) {
    if (known.name == format) return &known;
  }
  return nullptr;
}

// "User: x; Host: y"
std::string group_text(const sigma::correlation_match& match) {
  std::string out;
  for (const auto& [field, value] : match.group) {
    out += (out.empty() ? "" : "; ") + field + ": " + value;
  }
  return out;
}

}  // namespace

std::vector<std::string> match_formats() { return {formats.begin(), formats.end()}; }

bool usually_by_time(std::string_view format) {
  const form_name* const known = find_form(format);
  return known != nullptr && known->by_time;
}

match_output::match_output(const match_output_options& options, const sigma::rule_set& set,
                           output_buffer& out)
    : set_(set),
      out_(out),
      options_(options),
      is_table_(options.format == "csv"),
      is_tree_(options.format == "jsonl") {
  if (const form_name* known = find_form(options.format)) form_ = known->make(options.form);
  if (options.by_time) {
    by_time_ = std::make_unique<line_sorter>(options.sorting, options.form.copies);
  }
  for (const sigma::known_rule& known : set_.rules) {
    const sigma::rule& r = known.content;
    const bool runs = known.state == sigma::rule_state::runs;
    correlates_ = correlates_ || (runs && r.what == sigma::rule::kind::correlation);
    tails_.push_back(!form_      ? ""
                     : is_table_ ? table_cells(r, options.form.raw_cells)
                     : is_tree_  ? ",\"rule\":{" + json_members(r, "") + "}"
                                 : "," + json_members(r, "sigma_rule_"));
  }
}

void match_output::begin() {
  if (!form_) return;
  form_->begin(rendered_);
  (void)rendered_.flush();
  if (is_table_) add_tail(table_header);
  if (is_table_ && correlates_) add_tail(correlation_header);
  out_.append(line_);
}

void match_output::start_log(const log_source& log) {
  ++log_;
  if (form_) form_->start_log(log);
}

void match_output::render(const event_view& event) {
  line_.clear();
  form_->write(rendered_, event);
  (void)rendered_.flush();
}

void match_output::add_tail(std::string_view tail) {
  put_before(line_, is_table_ ? "\n" : "}\n", tail);
}

// What waits until its copies are counted: this, the event, and what stands behind it.
struct match_output::waiting_head {
  std::uint64_t tail_bytes;
  std::uint64_t copies;
};

event_identity::value match_output::identity_of(const event_view& event) {
  return options_.form.copies ? identity_.of(event) : event_identity::value{};
}

// Writes the event in hand with `tail` behind it, or has it wait. `copies` is how many there are of
// an event whose own copies have been counted.
void match_output::put(const sort_key& place, const sort_key& identity, std::string_view tail,
                       std::uint64_t copies) {
  if (!options_.form.copies) {
    if (form_) add_tail(tail);
    if (by_time_) {
      by_time_->add(place, {}, line_);
    } else {
      out_.append(line_);
    }
    return;
  }
  const waiting_head head{tail.size(), copies};
  packed_.assign(reinterpret_cast<const char*>(&head), sizeof(head));
  packed_.append(line_).append(tail);
  by_time_->add(place, identity, packed_);
}

// Makes a line of what waited.
void match_output::add_copies(std::string& packed, std::uint64_t copies) {
  waiting_head head;
  std::memcpy(&head, packed.data(), sizeof(head));
  const std::size_t event_bytes = packed.size() - sizeof(head) - head.tail_bytes;
  line_.assign(packed, sizeof(head), event_bytes);
  form_->add_copies(line_, copies * head.copies);
  add_tail(std::string_view(packed).substr(sizeof(head) + event_bytes));
  packed = line_;
}

sort_key match_output::place_of(std::uint64_t filetime, std::uint64_t log) const {
  return {{form_ ? form_->shown_time(filetime) : filetime, log, filetime}};
}

void match_output::write(const event_view& event, std::uint32_t rule) {
  if (form_) {
    render(event);
  } else {
    line_.clear();
    sigma::append_details(event, set_.rules[rule].content, line_);
  }
  const event_identity::value id = identity_of(event);
  put(place_of(event.time(), log_), {{id[0], id[1], rule}},
      is_table_ && correlates_ ? tails_[rule] + std::string(no_correlation) : tails_[rule], 1);
}

std::uint64_t match_output::keep(const event_view& event) {
  if (form_) {
    render(event);
  } else {
    line_.clear();
    sigma::append_event_details(event, line_);
  }
  if (error_.empty() && !kept_file_.is_open() && !kept_file_.create(options_.sorting.folder)) {
    error_ = kept_file_.error();
  }
  kept_.push_back({kept_file_.size(), line_.size(), log_});
  if (error_.empty() && !kept_file_.append(line_)) error_ = kept_file_.error();
  return kept_.size() - 1;
}

std::string match_output::correlation_cells(const sigma::correlation_match& match) const {
  std::string out;
  for (const std::string& text : {sigma::time_text(match.first), sigma::time_text(match.last),
                                  std::to_string(match.events), group_text(match)}) {
    append_cell(out, text, options_.form.raw_cells);
  }
  return out;
}

std::string match_output::correlation_tail(const sigma::correlation_match& match) const {
  if (is_table_) return tails_[match.rule] + correlation_cells(match);
  std::string group;
  for (const auto& [field, value] : match.group) {
    group += (group.empty() ? "" : ",") + json_text(field) + ":" + json_text(value);
  }
  const std::string_view prefix = is_tree_ ? "" : "sigma_correlation_";
  std::string out = tails_[match.rule] + (is_tree_ ? ",\"correlation\":{" : ",");
  const auto member = [&](std::string_view name, const std::string& json) {
    out.append(1, '"').append(prefix).append(name).append("\":").append(json);
  };
  member("first", json_text(sigma::time_text(match.first)) + ",");
  member("last", json_text(sigma::time_text(match.last)) + ",");
  member("events", std::to_string(match.events) + ",");
  member("group", is_tree_ ? "{" + group + "}" : json_text(group_text(match)));
  return is_tree_ ? out + "}" : out;
}

void match_output::write_correlation(const sigma::correlation_match& match) {
  const kept_line& kept = kept_[match.event.note];
  std::string event(kept.bytes, '\0');
  if (error_.empty() && !kept_file_.read(kept.offset, event)) error_ = kept_file_.error();
  if (!error_.empty()) return;
  if (form_) {
    line_ = std::move(event);
  } else {
    line_.clear();
    sigma::append_details(match, set_.rules[match.rule].content, event, line_);
  }
  // No rule has such a number: matches of correlations are no copies of one another.
  const sort_key identity{{++correlation_matches_, 0, ~std::uint64_t{0}}};
  put(place_of(match.event.time, kept.log), identity, form_ ? correlation_tail(match) : "",
      match.event.copies);
}

void match_output::end() {
  if (by_time_ && error_.empty()) {
    const auto note = [this](std::string& packed, std::uint64_t copies) {
      add_copies(packed, copies);
    };
    const bool done = by_time_->finish(note, [this](std::string_view line) {
      out_.append(line);
      return !out_.failed();
    });
    if (!done && !out_.failed()) error_ = by_time_->error();
  }
  if (form_) form_->end(out_);
}

}  // namespace zanvik
