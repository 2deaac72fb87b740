// Timesketch: JSON lines, one flat object an event, with the members that its importer and its
// analysers look for.
#include <string>

#include "export/event_form.h"
#include "export/json_members.h"
#include "export/xml_program.h"

namespace zanvik {
namespace {

// "TargetUserName" as "target_user_name".
std::string member_name(std::string_view name) {
  std::string out;
  const auto is_upper = [&](std::size_t i) { return name[i] >= 'A' && name[i] <= 'Z'; };
  const auto is_lower = [&](std::size_t i) { return name[i] >= 'a' && name[i] <= 'z'; };
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool ends_acronym = i != 0 && i + 1 < name.size() && is_upper(i - 1) && is_lower(i + 1);
    if (is_upper(i)) {
      if (i != 0 && (is_lower(i - 1) || ends_acronym) && !out.ends_with('_')) out += '_';
      out += static_cast<char>(name[i] | 0x20);
    } else if (name[i] == ' ' || name[i] == '-' || name[i] == '.' || name[i] == '/') {
      if (!out.ends_with('_')) out += '_';
    } else {
      out += name[i];
    }
  }
  return out;
}

class timesketch_form : public event_form {
 public:
  explicit timesketch_form(const form_options& options) : copies_(options.copies) {}

  void start_log(const log_source& source) override {
    log_.clear();
    log_lossy_ = false;
    append_escaped(log_, source.path, escape_form::json, log_lossy_);
  }

  void write(output_buffer& out, const event_view& event) override {
    const form_program& program =
        programs_.of(event, [&](form_program& fresh) { build(event, fresh); });
    program.write(out, event, log_, log_lossy_);
  }

  // The member `timestamp` counts microseconds.
  std::uint64_t shown_time(std::uint64_t filetime) const override { return filetime / 10; }

  void add_copies(std::string& event, std::uint64_t copies) const override {
    put_before(event, "}\n", ",\"copies\":" + std::to_string(copies));
  }

 private:
  static bool is_datum(const event_field& field) { return field.group != field_group::system; }
  void build(const event_view& event, form_program& out) const;
  static void write_message(const event_view& event, json_members& members, form_program& out);
  static void write_strings(const event_view& event, form_program& out);

  bool copies_;
  form_programs programs_;
  std::string log_;
  bool log_lossy_ = false;
};

// "Provider 4625: Name: value; Name: value", in one line.
void timesketch_form::write_message(const event_view& event, json_members& members,
                                    form_program& out) {
  const event_shape& shape = event.shape();
  members.name("message");
  out.text("\"");
  const std::int32_t provider = shape.find(system_member::provider_name);
  const std::int32_t id = shape.find(system_member::event_id);
  if (provider >= 0) {
    members.unquoted(shape.fields[static_cast<std::size_t>(provider)].parts, gap::json_line);
    out.text(" ");
  }
  out.text("event");
  if (id >= 0) {
    out.text(" ");
    members.unquoted(shape.fields[static_cast<std::size_t>(id)].parts, gap::json_line);
  }
  std::string_view before = ": ";
  for (const event_field& field : shape.fields) {
    if (!is_datum(field)) continue;
    out.text(before);
    before = "; ";
    if (!field.name.empty()) {
      out.escaped(field.name, escape_form::json_line);
      out.text(": ");
    }
    members.unquoted(field.parts, gap::json_line);
  }
  out.text("\"");
}

void timesketch_form::write_strings(const event_view& event, form_program& out) {
  out.text("[");
  for (const event_field& field : event.shape().fields) {
    if (!is_datum(field)) continue;
    if (field.parts.size() == 1 && field.parts.front().slot >= 0) {
      out.add(gap::json_text_items, field.parts.front().slot);
      continue;
    }
    json_members(event, out).quoted(field.parts);
    out.text(",");
  }
  out.add(gap::json_list_end);
  out.text("]");
}

void timesketch_form::build(const event_view& event, form_program& out) const {
  json_members members(event, out);
  members.open_object();
  for (const char* name :
       {"slack", "cut", "outside_range", "no_template", "carved", "deleted", "lossy"}) {
    members.reserve(name);  // gap::json_oddities
  }
  if (copies_) members.reserve("copies");
  write_message(event, members, out);
  members.gap_text("datetime", gap::time_offset);
  members.gap_bare("timestamp", gap::unix_microseconds);
  members.constant("timestamp_desc", "Event Logged");
  const bool evt = event.source().kind == log_kind::evt;
  members.constant("data_type", evt ? "windows:evt:record" : "windows:evtx:record");
  members.number("event_identifier", system_member::event_id);
  members.gap_bare("record_number", gap::record_number);
  members.text("source_name", system_member::provider_name);
  members.text("channel", system_member::channel);
  members.text("computer_name", system_member::computer);
  members.text("user_sid", system_member::user_id);
  members.number("event_level", system_member::level);
  members.name("strings");
  write_strings(event, out);
  members.gap_text("xml_string", gap::xml_string);
  members.gap_text("filename", gap::log_path);
  members.gap_bare("offset", gap::file_offset);
  for (const event_field& field : event.shape().fields) {
    if (!is_datum(field) || field.name.empty()) continue;
    members.field_text(member_name(field.name), field.parts);
  }
  out.add(gap::json_oddities);
  out.text("}\n");
  auto xml = std::make_shared<form_program>();
  build_event_xml(event, *xml);
  xml->finish();
  out.set_xml(std::move(xml));
}

}  // namespace

std::unique_ptr<event_form> make_timesketch_form(const form_options& options) {
  return std::make_unique<timesketch_form>(options);
}

}  // namespace zanvik
