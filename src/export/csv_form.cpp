// CSV: one table for all events, 13 cells a row.
#include <string>

#include "export/event_form.h"
#include "export/form_program.h"
#include "export/line_text.h"

namespace zanvik {
namespace {

constexpr std::string_view header =
    "time,log,record,offset,channel,provider,event_id,level,computer,user_sid,process_id,"
    "thread_id,data";

class csv_form : public event_form {
 public:
  explicit csv_form(const form_options& options)
      : raw_cells_(options.raw_cells), copies_(options.copies) {}

  void begin(output_buffer& out) override {
    out.append(header);
    out.append(copies_ ? ",copies\n" : "\n");
  }

  void start_log(const log_source& source) override {
    log_.clear();
    log_lossy_ = false;
    if (!raw_cells_ && is_formula(source.path)) log_ = "'";
    append_escaped(log_, source.path, escape_form::csv, log_lossy_);
  }

  void write(output_buffer& out, const event_view& event) override {
    const form_program& program =
        programs_.of(event, [&](form_program& fresh) { build(event, fresh); });
    program.write(out, event, log_, log_lossy_);
  }

  void add_copies(std::string& event, std::uint64_t copies) const override {
    put_before(event, "\n", "," + std::to_string(copies));
  }

 private:
  void build(const event_view& event, form_program& out) const;
  void write_member(const event_view& event, system_member member, form_program& out) const;
  void write_data(const event_view& event, form_program& out) const;
  void write_parts(const value_parts& parts, bool& started, form_program& out) const;
  void write_constant(std::string_view text, bool& started, form_program& out) const;

  bool raw_cells_, copies_;
  form_programs programs_;
  std::string log_;
  bool log_lossy_ = false;
};

// Cells begin with their first piece of text, which is the one that could be a formula.
void csv_form::write_constant(std::string_view text, bool& started, form_program& out) const {
  if (text.empty()) return;
  if (!started) {
    out.text(!raw_cells_ && is_formula(text) ? "\"'" : "\"");
  } else if (!raw_cells_ && is_formula(text)) {
    out.add(gap::csv_guard);  // the values before it may be empty
  }
  started = true;
  out.escaped(text, escape_form::csv);
}

void csv_form::write_parts(const value_parts& parts, bool& started, form_program& out) const {
  for (const value_part& part : parts) {
    if (part.slot == -1) write_constant(part.text, started, out);
    if (part.slot < 0) continue;
    if (started || raw_cells_) {
      if (!started) out.text("\"");
      out.add(gap::csv_text, part.slot);
    } else {
      out.add(gap::csv_start, part.slot);
    }
    started = true;
  }
}

void csv_form::write_member(const event_view& event, system_member member,
                            form_program& out) const {
  const std::int32_t found = event.shape().find(member);
  bool started = false;
  if (found >= 0) {
    write_parts(event.shape().fields[static_cast<std::size_t>(found)].parts, started, out);
  }
  out.text(started ? "\"," : ",");
}

// "Name: value; Name: value", for people. What is odd about the event stands last, like a datum.
void csv_form::write_data(const event_view& event, form_program& out) const {
  bool started = false;
  bool first = true;
  for (const event_field& field : event.shape().fields) {
    if (field.group == field_group::system) continue;
    if (!first) write_constant("; ", started, out);
    first = false;
    if (!field.name.empty()) write_constant(field.name + ": ", started, out);
    write_parts(field.parts, started, out);
  }
  out.add(gap::csv_oddities, -1, started ? "; " : "\"", started ? "" : "\"");
  if (started) out.text("\"");
}

void csv_form::build(const event_view& event, form_program& out) const {
  out.add(gap::time);
  out.text(",\"");
  out.add(gap::log_path);
  out.text("\",");
  out.add(gap::record_number);
  out.text(",");
  out.add(gap::file_offset);
  out.text(",");
  for (const system_member member :
       {system_member::channel, system_member::provider_name, system_member::event_id,
        system_member::level, system_member::computer, system_member::user_id,
        system_member::process_id, system_member::thread_id}) {
    write_member(event, member, out);
  }
  write_data(event, out);
  out.text("\n");
}

}  // namespace

std::unique_ptr<event_form> make_csv_form(const form_options& options) {
  return std::make_unique<csv_form>(options);
}

}  // namespace zanvik
