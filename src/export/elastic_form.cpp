// Elastic: JSON lines with the fields of Winlogbeat and the Elastic Common Schema, as nested
// objects.
#include <string>

#include "export/event_form.h"
#include "export/json_members.h"

namespace zanvik {
namespace {

constexpr std::string_view schema_version = "8.0.0";

class elastic_form : public event_form {
 public:
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

  void add_copies(std::string& event, std::uint64_t copies) const override {
    put_before(event, "}}\n", ",\"copies\":" + std::to_string(copies));
  }

 private:
  static void build(const event_view& event, form_program& out);
  static void write_winlog(const event_view& event, json_members& members, form_program& out);
  static void write_data(const event_view& event, json_members& members);

  form_programs programs_;
  std::string log_;
  bool log_lossy_ = false;
};

void elastic_form::build(const event_view& event, form_program& out) {
  json_members members(event, out);
  members.open_object();
  members.gap_text("@timestamp", gap::time);
  members.open_object("ecs");
  members.constant("version", schema_version);
  members.close_object();
  members.open_object("event");
  members.constant("kind", "event");
  members.text("code", system_member::event_id);
  members.text("provider", system_member::provider_name);
  members.gap_text("created", gap::written);
  members.close_object();
  members.open_object("log");
  members.open_object("file");
  members.gap_text("path", gap::log_path);
  members.close_object();
  if (!event.value(system_member::level).absent()) {  // nothing is made up for an event without
    const std::int32_t slot = members.slot_of(system_member::level);
    if (slot >= 0) {
      members.gap_text("level", gap::level_name, slot);
    } else {
      members.constant("level", level_text(event.value(system_member::level)));
    }
  }
  members.close_object();
  members.open_object("host");
  members.text("name", system_member::computer);
  members.close_object();
  write_winlog(event, members, out);
  members.open_object("zanvik");
  members.gap_bare("offset", gap::file_offset);
  members.gap_bare("record", gap::record_number);
  out.add(gap::json_oddities);
  members.close_object();
  members.close_object();
  out.text("\n");
}

void elastic_form::write_winlog(const event_view& event, json_members& members, form_program& out) {
  members.open_object("winlog");
  members.constant("api", "wineventlog-file");
  members.text("channel", system_member::channel);
  members.text("provider_name", system_member::provider_name);
  members.text("provider_guid", system_member::provider_guid);
  members.text("event_id", system_member::event_id);
  members.gap_text("record_id", gap::record_number);
  members.text("computer_name", system_member::computer);
  members.number("version", system_member::version);
  members.text("opcode", system_member::opcode);
  members.text("task", system_member::task);
  members.name("keywords");
  out.text("[");
  if (const std::int32_t slot = members.slot_of(system_member::keywords); slot >= 0) {
    out.add(gap::keyword_names, slot);
  } else {
    out.text(keyword_texts(event.value(system_member::keywords)));
  }
  out.text("]");
  members.text("activity_id", system_member::activity_id);
  members.text("related_activity_id", system_member::related_activity_id);
  members.open_object("process");
  members.number("pid", system_member::process_id);
  members.open_object("thread");
  members.number("id", system_member::thread_id);
  members.close_object();
  members.close_object();
  members.open_object("user");
  members.text("identifier", system_member::user_id);
  members.close_object();
  write_data(event, members);
  members.close_object();
}

// Data as texts; those without a name are param1, param2 and so on.
void elastic_form::write_data(const event_view& event, json_members& members) {
  unsigned unnamed = 0;
  members.open_object("event_data");
  for (const event_field& field : event.shape().fields) {
    if (field.group != field_group::data) continue;
    const std::string name = field.name.empty() ? "param" + std::to_string(++unnamed) : field.name;
    members.field_text(name, field.parts);
  }
  members.close_object();
  members.open_object("user_data");
  for (const event_field& field : event.shape().fields) {
    if (field.group == field_group::other) members.field_text(field.name, field.parts);
  }
  members.close_object();
}

}  // namespace

std::unique_ptr<event_form> make_elastic_form(const form_options&) {
  return std::make_unique<elastic_form>();
}

}  // namespace zanvik
