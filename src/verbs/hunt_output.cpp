#include "verbs/hunt_output.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "export/escaped_text.h"
#include "sigma/rule_matches.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

constexpr std::array<std::string_view, 3> formats{"jsonl", "csv", "timesketch"};

std::string json_text(std::string_view text) {
  std::string out = "\"";
  bool lossy = false;
  append_escaped(out, text, escape_form::json, lossy);
  return out + '"';
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

// A cell of a table, which a spreadsheet must not take for a formula.
void append_cell(std::string& out, std::string_view text, bool raw) {
  const bool formula = !text.empty() && std::string_view("=+-@\t\r").find(text[0]) != text.npos;
  out += ",\"";
  if (formula && !raw) out += '\'';
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
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

// A file that goes with its descriptor; -1 when it cannot be made.
int open_temporary() {
  const char* const folder = std::getenv("TMPDIR");
  std::string name = std::string(folder != nullptr ? folder : "/tmp") + "/zanvik-XXXXXX";
  const int file = mkstemp(name.data());
  if (file >= 0) unlink(name.c_str());
  return file;
}

}  // namespace

std::vector<std::string> match_formats() {
  std::vector<std::string> out;
  for (const form_name& known : form_names()) {
    if (std::find(formats.begin(), formats.end(), known.name) != formats.end()) {
      out.emplace_back(known.name);
    }
  }
  return out;
}

line_store::~line_store() {
  buffer_.reset();
  if (file_ >= 0) close(file_);
}

output_buffer& line_store::buffer() {
  if (!buffer_) {
    file_ = open_temporary();
    // Writing to no file fails, and stays failed.
    buffer_ = std::make_unique<output_buffer>(file_);
  }
  return *buffer_;
}

line_store::place line_store::finish_line() {
  if (!buffer_->flush()) return {};
  const auto end = static_cast<std::uint64_t>(lseek(file_, 0, SEEK_END));
  const place where{written_, static_cast<std::uint32_t>(end - written_)};
  written_ = end;
  return where;
}

bool line_store::read(place where, std::string& line) {
  line.resize(where.size);
  return buffer_ && !buffer_->failed() && where.size != 0 &&
         read_fully(file_, std::as_writable_bytes(std::span(line)), where.offset) ==
             static_cast<ssize_t>(where.size);
}

match_output::match_output(std::string_view format, const form_options& options,
                           const sigma::rule_set& set, bool in_time_order, output_buffer& out)
    : set_(set),
      out_(out),
      is_table_(format == "csv"),
      is_tree_(format == "jsonl"),
      in_time_order_(in_time_order) {
  for (const form_name& known : form_names()) {
    if (known.name == format) form_ = known.make(options);
  }
  for (const sigma::known_rule& known : set_.rules) {
    const sigma::rule& r = known.content;
    tails_.push_back(is_table_  ? table_cells(r, options.raw_cells)
                     : is_tree_ ? ",\"rule\":{" + json_members(r, "") + "}"
                                : "," + json_members(r, "sigma_rule_"));
  }
}

// Puts `tail` into the line that was just written, before what ends it.
void match_output::append_tail(output_buffer& out, std::string_view tail) const {
  out.take_back('\n');
  if (!is_table_) out.take_back('}');
  out.append(tail);
  out.append(is_table_ ? "\n" : "}\n");
}

void match_output::begin() {
  form_->begin(out_);
  if (is_table_) append_tail(out_, table_header);
}

void match_output::write(const event_view& event, std::uint32_t rule) {
  output_buffer& out = in_time_order_ ? store_.buffer() : out_;
  form_->write(out, event);
  append_tail(out, tails_[rule]);
  if (in_time_order_) waiting_.push_back({event.time(), store_.finish_line()});
}

std::uint64_t match_output::keep(const event_view& event) {
  form_->write(store_.buffer(), event);
  kept_.push_back(store_.finish_line());
  return kept_.size() - 1;
}

std::string match_output::correlation_tail(const sigma::correlation_match& match) const {
  std::string out = tails_[match.rule];
  if (is_table_) return out;
  std::string group, flat_group;
  for (const auto& [field, value] : match.group) {
    group += (group.empty() ? "" : ",") + json_text(field) + ":" + json_text(value);
    flat_group += (flat_group.empty() ? "" : "; ") + field + ": " + value;
  }
  const std::string_view prefix = is_tree_ ? "" : "sigma_correlation_";
  const auto member = [&](std::string_view name, const std::string& json) {
    out.append(1, '"').append(prefix).append(name).append("\":").append(json);
  };
  out += is_tree_ ? ",\"correlation\":{" : ",";
  member("first", json_text(sigma::time_text(match.first)) + ",");
  member("last", json_text(sigma::time_text(match.last)) + ",");
  member("events", std::to_string(match.events) + ",");
  member("group", is_tree_ ? "{" + group + "}" : json_text(flat_group));
  return is_tree_ ? out + "}" : out;
}

void match_output::write_correlation(const sigma::correlation_match& match) {
  std::string line;
  if (!store_.read(kept_[match.event.note], line)) {
    failed_ = true;
    return;
  }
  output_buffer& out = in_time_order_ ? store_.buffer() : out_;
  out.append(line);
  append_tail(out, correlation_tail(match));
  if (in_time_order_) waiting_.push_back({match.event.time, store_.finish_line()});
}

bool match_output::end() {
  std::stable_sort(waiting_.begin(), waiting_.end(),
                   [](const auto& a, const auto& b) { return a.time < b.time; });
  std::string line;
  for (const waiting_line& waiting : waiting_) {
    if (store_.read(waiting.where, line)) {
      out_.append(line);
    } else {
      failed_ = true;
    }
  }
  form_->end(out_);
  return !failed_;
}

}  // namespace zanvik
