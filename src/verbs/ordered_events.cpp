#include "verbs/ordered_events.h"

#include <cstring>
#include <optional>

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
  if (!by_time) return;
  sort_settings settings = options.sorting;
  // While one passes on its events the other collects them.
  if (unique) settings.memory_bytes /= 2;
  by_time_ = std::make_unique<external_sorter>(settings);
  if (unique) by_identity_ = std::make_unique<external_sorter>(settings);
}

void ordered_events::write(const event_view& event) {
  if (by_time_) return sort(event);
  form_.write(out_, event);
}

void ordered_events::sort(const event_view& event) {
  if (!error_.empty()) return;
  const std::uint64_t time = event.time();
  const sort_key key{{form_.shown_time(time), log_, time}};
  rendered_.clear();
  if (by_identity_) {
    // The other key comes before the event's bytes.
    rendered_.assign(reinterpret_cast<const char*>(&key), sizeof(key));
    form_.write(render_, event);
    (void)render_.flush();
    const event_identity::value id = identity_.of(event);
    if (!by_identity_->add({{id[0], id[1], 0}}, rendered_)) fail(*by_identity_);
  } else {
    form_.write(render_, event);
    (void)render_.flush();
    if (!by_time_->add(key, rendered_)) fail(*by_time_);
  }
}

// Equal events are next to each other, in the order in which they were read.
bool ordered_events::count_copies() {
  std::optional<sort_key> identity;
  sort_key first_key;
  std::string first;
  std::uint64_t copies = 0;
  const auto hand_on = [&] {
    if (copies == 0) return true;
    form_.add_copies(first, copies);
    return by_time_->add(first_key, first) || fail(*by_time_);
  };
  const bool done = by_identity_->finish([&](const sort_key& id, std::string_view bytes) {
    if (identity == id) {
      ++copies;
      return true;
    }
    if (!hand_on()) return false;
    identity = id;
    std::memcpy(&first_key, bytes.data(), sizeof(first_key));
    first = bytes.substr(sizeof(first_key));
    copies = 1;
    return true;
  });
  return done ? hand_on() : fail(*by_identity_);
}

bool ordered_events::finish() {
  if (!error_.empty()) return false;
  if (by_identity_ && !count_copies()) return false;
  if (!by_time_) return true;
  const bool done = by_time_->finish([this](const sort_key&, std::string_view bytes) {
    out_.append(bytes);
    return !out_.failed();
  });
  return done || out_.failed() || fail(*by_time_);
}

// The error is the sorter's; always false.
bool ordered_events::fail(const external_sorter& sorter) {
  if (error_.empty()) error_ = sorter.error();
  return false;
}

}  // namespace zanvik
