#include "export/event_form.h"

#include <cassert>

namespace zanvik {

std::span<const form_name> form_names() {
  static constexpr form_name names[] = {
      {"jsonl", "a line of JSON for each event, with its tree and its types", make_json_form},
      {"xml", "the events' XML in one document", make_xml_form},
      {"csv", "one table for all events", make_csv_form},
      {"timesketch", "JSON lines for Timesketch", make_timesketch_form, true},
      {"elastic", "JSON lines with Winlogbeat's fields", make_elastic_form},
  };
  return names;
}

void put_before(std::string& event, std::string_view end, std::string_view text) {
  assert(event.ends_with(end));
  event.insert(event.size() - end.size(), text);
}

}  // namespace zanvik
