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

ordered_events::ordered_events(event_form& form, output_buffer& out, const order_options& options,
                               bool by_time, bool unique)
    : form_(form), out_(out), render_(rendered_) {
  if (by_time) by_time_ = std::make_unique<line_sorter>(options.sorting, unique);
}

void ordered_events::write(const event_view& event) {
  if (!by_time_) return form_.write(out_, event);
  const std::uint64_t time = event.time();
  rendered_.clear();
  form_.write(render_, event);
  (void)render_.flush();
  event_identity::value id{};
  if (by_time_->unique()) id = identity_.of(event);
  by_time_->add({{form_.shown_time(time), log_, time}}, {{id[0], id[1], 0}}, rendered_);
}

bool ordered_events::finish() {
  if (!by_time_) return true;
  const auto note = [this](std::string& event, std::uint64_t copies) {
    form_.add_copies(event, copies);
  };
  const bool done = by_time_->finish(note, [this](std::string_view event) {
    out_.append(event);
    return !out_.failed();
  });
  return done || out_.failed();
}

const std::string& ordered_events::error() const {
  static const std::string none;
  return by_time_ ? by_time_->error() : none;
}

}  // namespace zanvik
