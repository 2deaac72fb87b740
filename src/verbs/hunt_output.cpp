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

match_form::match_form(const match_output_options& options, const sigma::rule_set& set)
    : set_(set),
      options_(options),
      known_(find_form(options.format)),
      is_table_(options.format == "csv"),
      is_tree_(options.format == "jsonl") {
  for (const sigma::known_rule& known : set_.rules) {
    const sigma::rule& r = known.content;
    const bool runs = known.state == sigma::rule_state::runs;
    correlates_ = correlates_ || (runs && r.what == sigma::rule::kind::correlation);
    tails_.push_back(is_text()   ? ""
                     : is_table_ ? table_cells(r, options.form.raw_cells)
                     : is_tree_  ? ",\"rule\":{" + json_members(r, "") + "}"
                                 : "," + json_members(r, "sigma_rule_"));
  }
  match_tails_ = tails_;
  for (std::string& tail : match_tails_) {
    if (is_table_ && correlates_) tail += no_correlation;
  }
}

std::unique_ptr<event_form> match_form::make() const {
  return known_ ? known_->make(options_.form) : nullptr;
}

std::string match_form::header() const {
  if (!is_table_) return "";
  return std::string(table_header) + std::string(correlates_ ? correlation_header : "");
}

void match_form::add_tail(std::string& event, std::string_view tail) const {
  put_before(event, is_table_ ? "\n" : "}\n", tail);
}

std::string match_form::correlation_cells(const sigma::correlation_match& match) const {
  std::string out;
  for (const std::string& text : {sigma::time_text(match.first), sigma::time_text(match.last),
                                  std::to_string(match.events), group_text(match)}) {
    append_cell(out, text, options_.form.raw_cells);
  }
  return out;
}

std::string match_form::correlation_tail(const sigma::correlation_match& match) const {
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

namespace {

// What waits until its copies are counted: this, the event, and what stands behind it.
struct waiting_head {
  std::uint64_t tail_bytes;
  std::uint64_t copies;  // of an event whose own copies have been counted
};

void pack(std::string& out, std::string_view event, std::string_view tail, std::uint64_t copies) {
  const waiting_head head{tail.size(), copies};
  out.assign(reinterpret_cast<const char*>(&head), sizeof(head));
  out.append(event).append(tail);
}

sort_key place_of(const event_form* form, std::uint64_t filetime, std::uint64_t log) {
  return {{form ? form->shown_time(filetime) : filetime, log, filetime}};
}

}  // namespace

void match_lines::start_log(const log_source& log, std::uint64_t number) {
  log_ = number;
  if (events_) events_->start_log(log);
}

void match_lines::render(const event_view& event) {
  line_.clear();
  events_->write(rendered_, event);
  (void)rendered_.flush();
}

event_identity::value match_lines::identity_of(const event_view& event) {
  return form_.options().form.copies ? identity_.of(event) : event_identity::value{};
}

match_lines::line match_lines::of(const event_view& event, std::uint32_t rule) {
  const sort_key place = place_of(events_.get(), event.time(), log_);
  if (!events_) {
    line_.clear();
    sigma::append_details(event, form_.rule_at(rule), line_);
    return {place, {}, line_};
  }
  render(event);
  if (!form_.options().form.copies) {
    form_.add_tail(line_, form_.match_tail(rule));
    return {place, {}, line_};
  }
  const event_identity::value id = identity_of(event);
  pack(packed_, line_, form_.match_tail(rule), 1);
  return {place, {{id[0], id[1], rule}}, packed_};
}

std::string_view match_lines::event_text(const event_view& event) {
  if (events_) {
    render(event);
  } else {
    line_.clear();
    sigma::append_event_details(event, line_);
  }
  return line_;
}

match_output::match_output(const match_form& form, output_buffer& out)
    : form_(form), out_(out), events_(form.make()) {
  const match_output_options& options = form.options();
  if (options.by_time) {
    by_time_ = std::make_unique<line_sorter>(options.sorting, options.form.copies);
  }
}

void match_output::begin() {
  if (!events_) return;
  output_buffer rendered(line_);
  events_->begin(rendered);
  (void)rendered.flush();
  if (const std::string header = form_.header(); !header.empty()) form_.add_tail(line_, header);
  out_.append(line_);
}

void match_output::write(const sort_key& place, const sort_key& identity, std::string_view line) {
  if (by_time_) {
    by_time_->add(place, identity, line);
  } else {
    out_.append(line);
  }
}

// Makes a line of what waited.
void match_output::add_copies(std::string& packed, std::uint64_t copies) {
  waiting_head head;
  std::memcpy(&head, packed.data(), sizeof(head));
  const std::size_t event_bytes = packed.size() - sizeof(head) - head.tail_bytes;
  line_.assign(packed, sizeof(head), event_bytes);
  events_->add_copies(line_, copies * head.copies);
  form_.add_tail(line_, std::string_view(packed).substr(sizeof(head) + event_bytes));
  packed = line_;
}

std::uint64_t match_output::keep(std::string_view event, std::uint64_t log) {
  if (error_.empty() && !kept_file_.is_open() &&
      !kept_file_.create(form_.options().sorting.folder)) {
    error_ = kept_file_.error();
  }
  kept_.push_back({kept_file_.size(), event.size(), log});
  if (error_.empty() && !kept_file_.append(event)) error_ = kept_file_.error();
  return kept_.size() - 1;
}

void match_output::write_correlation(const sigma::correlation_match& match) {
  const kept_line& kept = kept_[match.event.note];
  std::string event(kept.bytes, '\0');
  if (error_.empty() && !kept_file_.read(kept.offset, event)) error_ = kept_file_.error();
  if (!error_.empty()) return;
  const sort_key place = place_of(events_.get(), match.event.time, kept.log);
  if (!events_) {
    line_.clear();
    sigma::append_details(match, form_.rule_at(match.rule), event, line_);
    return write(place, {}, line_);
  }
  if (!form_.options().form.copies) {
    form_.add_tail(event, form_.correlation_tail(match));
    return write(place, {}, event);
  }
  pack(packed_, event, form_.correlation_tail(match), match.event.copies);
  // No rule has such a number: matches of correlations are no copies of one another.
  write(place, {{++correlation_matches_, 0, ~std::uint64_t{0}}}, packed_);
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
  if (events_) events_->end(out_);
}

}  // namespace zanvik
