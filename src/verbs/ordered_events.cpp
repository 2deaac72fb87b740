#include "verbs/ordered_events.h"

#include "base/hash_mix.h"
#include "export/xml_program.h"

namespace zanvik {

// The XML has all values with their names; the values' own bytes distinguish those that read alike.
event_identity::value event_identity::of(const event_view& event) {
  const form_program& program =
      programs_.of(event, [&](form_program& fresh) { build_event_xml(event, fresh); });
  xml_.clear();
  program.write(out_, event, {}, false);
  (void)out_.flush();
  value id{keyed_hash(xml_, 1), keyed_hash(xml_, 2)};
  const auto mix = [&id](auto&& part) {
    for (std::uint64_t& half : id) half = keyed_hash(part, half);
  };
  const std::uint64_t head[] = {event.header().record_number, event.time()};
  mix(std::as_bytes(std::span(head)));
  for (const event_value& slot : event.slots()) {
    // Nested binary XML has its values in separate slots, and offsets into its chunk.
    if (slot.is_nested()) continue;
    const std::uint32_t kind[] = {slot.type, slot.size};
    mix(std::as_bytes(std::span(kind)));
    mix(slot.bytes());
  }
  return id;
}

void timed_lines::add(const sort_key& place, const sort_key& identity, std::string_view line) {
  lines_.push_back({place, identity, line.size()});
  text_ += line;
}

void timed_lines::hand_on(line_sorter& sorter) {
  std::string_view rest = text_;
  for (const timed_line& line : lines_) {
    sorter.add(line.place, line.identity, rest.substr(0, line.bytes));
    rest.remove_prefix(line.bytes);
  }
  lines_.clear();
  text_.clear();
}

void timed_line_maker::make(const event_view& event, std::uint64_t log, timed_lines& out) {
  const std::uint64_t time = event.time();
  rendered_.clear();
  form_.write(render_, event);
  (void)render_.flush();
  event_identity::value id{};
  if (unique_) id = identity_.of(event);
  out.add({{form_.shown_time(time), log, time}}, {{id[0], id[1], 0}}, rendered_);
}

bool write_lines(line_sorter& sorter, const event_form& form, output_buffer& out) {
  const auto note = [&form](std::string& event, std::uint64_t copies) {
    form.add_copies(event, copies);
  };
  const bool done = sorter.finish(note, [&out](std::string_view event) {
    out.append(event);
    return !out.failed();
  });
  return done || out.failed();
}

}  // namespace zanvik
