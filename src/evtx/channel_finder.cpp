#include "evtx/channel_finder.h"

#include <algorithm>

#include "base/text.h"
#include "evtx/first_record.h"
#include "evtx/templates/template_record.h"
#include "evtx/values/value_text.h"

namespace zanvik {
namespace {

constexpr std::string_view opening = "<channel>";
constexpr std::string_view closing = "</channel>";
constexpr std::uint64_t first_bxml =
    evtx_layout::chunk_header_bytes + evtx_layout::record_header_bytes;

// A body's text in lower case without the values of its slots, and where these would be.
struct body_text {
  std::string text;
  std::vector<slot_place> places;  // ascending
};

body_text text_of_body(const chunk_view& chunk, const template_ref& ref, std::size_t slot_count) {
  slot_entry empty;
  empty.type = value_type::utf16;
  empty.composed = true;
  std::vector<slot_entry> slots(slot_count, empty);
  field_map fields;
  body_text body;
  if (!decode_template_body(chunk, ref, slots, fields, &body.text, &body.places)) return {};
  to_lower_in_place(body.text);
  return body;
}

// Whether no value at this place can become part of a tag that is searched for.
bool stands_apart(std::string_view text, std::size_t at) {
  const std::string_view before = text.substr(0, at);
  const auto bracket = before.rfind('<');
  return bracket == std::string_view::npos ||
         before.substr(bracket).find_first_of(">\"=") != std::string_view::npos;
}

// Whether the value's text contains no '<': numbers and the like, and texts made from bytes without
// one.
bool is_tagless(const chunk_view& chunk, const slot_entry& slot) {
  if (slot.composed || slot.type == value_type::ansi || slot.type == value_type::bxml) return false;
  if (slot.type >= value_type::int8 && slot.type <= value_type::boolean) return true;
  if (slot.type >= value_type::guid && slot.type <= value_type::hex64) return true;
  const auto bytes = chunk.bytes.bytes_at(slot.offset, slot.size);
  return std::find(bytes.begin(), bytes.end(), std::byte{'<'}) == bytes.end();
}

}  // namespace

found_channel channel_in_text(std::string text) {
  to_lower_in_place(text);
  const std::size_t found = text.find(opening);
  if (found == std::string::npos) return {};
  const std::size_t begin = found + opening.size();
  const std::size_t end = text.find(closing, begin);
  if (end == std::string::npos) return {false, std::nullopt};
  return {true, text.substr(begin, end - begin)};
}

found_channel channel_finder::find(std::span<const std::byte> chunk) {
  if (auto found = find_quickly(chunk)) return *std::move(found);
  return channel_in_text(first_record_text(chunk).value_or(""));
}

std::optional<found_channel> channel_finder::find_quickly(std::span<const std::byte> chunk) {
  work_budget budget;
  const chunk_view view{byte_cursor(chunk), chunk.size(), 0, &budget, &memory_};
  memory_.start_chunk();
  memory_.start_record();
  const auto head = fragment_instance_at(view, first_bxml);
  if (!head || head->definition > evtx_layout::chunk_bytes) return std::nullopt;
  catalogue_.read(view);
  const template_ref* ref =
      resolve_first_reference(catalogue_, view, first_bxml, head->template_id, head->definition);
  const auto table = slot_table_behind(view, first_bxml, head->length, head->definition);
  if (!ref || !table || !body_matches(view, *ref)) return std::nullopt;
  if (bodies_.drop_if_full() || outlines_.size() > limits::cached_layouts) outlines_.clear();
  const std::uint32_t body = bodies_.identify(view, ref->definition, ref->size_record, ref->guid);
  constexpr unsigned depth = 1;  // one level down, children are counted and not read
  if (body == 0 || !parse_substitution_array(view, *table, slots_, depth)) return std::nullopt;
  return channel_by(outline_of(view, *ref, body, slots_.size()), view);
}

// The channel from the outline and the values in `slots_`.
std::optional<found_channel> channel_finder::channel_by(const outline& known,
                                                        const chunk_view& view) const {
  if (!known.certain) return std::nullopt;
  std::uint64_t value_bytes = 0;
  for (const std::size_t slot : known.slots) {
    if (!is_tagless(view, slots_[slot])) return std::nullopt;
    value_bytes += slots_[slot].size;
  }
  // Far from where the whole record would be cut.
  if (value_bytes > evtx_layout::chunk_bytes) return std::nullopt;
  std::string text = known.before;
  if (known.value) {
    const slot_entry& slot = slots_[*known.value];
    const std::size_t before = text.size();
    append_value_text(text, raw_value_at(view.bytes, slot.offset, slot.type, slot.size));
    if (text.size() == before) return std::nullopt;  // shown as its bytes, if it has any
    to_lower_in_place(text);
  }
  return found_channel{true, text + known.after};
}

const channel_finder::outline& channel_finder::outline_of(const chunk_view& chunk,
                                                          const template_ref& ref,
                                                          std::uint32_t body,
                                                          std::size_t slot_count) {
  const auto [at, added] = outlines_.try_emplace({body, slot_count});
  if (added) at->second = make_outline(chunk, ref, slot_count);
  return at->second;
}

channel_finder::outline channel_finder::make_outline(const chunk_view& chunk,
                                                     const template_ref& ref,
                                                     std::size_t slot_count) {
  outline result;
  const body_text body = text_of_body(chunk, ref, slot_count);
  const std::string_view text = body.text;
  const std::size_t found = text.find(opening);
  const std::size_t end = found == std::string::npos ? found : text.find(closing, found);
  if (end == std::string::npos) return result;
  const std::size_t begin = found + opening.size();
  std::size_t value = end;
  for (const slot_place& place : body.places) {
    if (place.at >= end + closing.size()) break;
    if (!stands_apart(text, place.at) || result.value) return result;
    result.slots.push_back(place.slot);
    if (place.at < begin) continue;
    result.value = place.slot;
    value = place.at;
  }
  result.before = text.substr(begin, value - begin);
  result.after = text.substr(value, end - value);
  result.certain = true;
  return result;
}

}  // namespace zanvik
