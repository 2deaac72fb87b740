// XML: the events as Windows shows them, in one document.
#include <string>

#include "export/event_form.h"
#include "export/xml_program.h"

namespace zanvik {
namespace {

class xml_form : public event_form {
 public:
  void begin(output_buffer& out) override {
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Events>\n");
  }

  void start_log(const log_source& source) override {
    log_.clear();
    log_lossy_ = false;
    append_escaped(log_, source.path, escape_form::xml_attribute, log_lossy_);
  }

  void write(output_buffer& out, const event_view& event) override {
    const form_program& program =
        programs_.of(event, [&](form_program& fresh) { build(event, fresh); });
    if (program.write(out, event, log_, log_lossy_)) out.append("<?zanvik lossy=\"true\"?>");
    out.append("\n");
  }

  void end(output_buffer& out) override { out.append("</Events>\n"); }

  // Into the instruction before the event, whose path contains no `>`.
  void add_copies(std::string& event, std::uint64_t copies) const override {
    event.insert(event.find("?>"), " copies=\"" + std::to_string(copies) + '"');
  }

 private:
  static void build(const event_view& event, form_program& out) {
    out.text("<?zanvik log=\"");
    out.add(gap::log_path);
    out.text("\" offset=\"");
    out.add(gap::file_offset);
    out.text("\" record=\"");
    out.add(gap::record_number);
    out.text("\"");
    out.add(gap::xml_oddities);
    out.text("?>");
    build_event_xml(event, out);
  }

  form_programs programs_;
  std::string log_;
  bool log_lossy_ = false;
};

}  // namespace

std::unique_ptr<event_form> make_xml_form(const form_options&) {
  return std::make_unique<xml_form>();
}

}  // namespace zanvik
