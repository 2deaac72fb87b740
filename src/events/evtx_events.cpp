#include "events/evtx_events.h"

#include <algorithm>
#include <cstring>

#include "base/hash_mix.h"
#include "events/template_compiler.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint64_t descriptor_bytes = 4;
constexpr std::size_t slots_a_word = 32;  // of kinds

// The descriptor of a value: its size in the low half, its type in the high one.
std::uint32_t descriptor_at(const std::byte* descriptors, std::size_t number) {
  std::uint32_t descriptor;
  std::memcpy(&descriptor, descriptors + descriptor_bytes * number, sizeof(descriptor));
  return descriptor;
}

constexpr auto kinds_of_types = [] {
  std::array<std::uint8_t, literal_type + 1> kinds{};
  for (std::uint16_t type = 0; type <= literal_type; ++type) {
    kinds[type] = static_cast<std::uint8_t>(kind_bits(type));
  }
  return kinds;
}();

std::uint16_t type_of(std::uint32_t descriptor) {
  const auto type = static_cast<std::uint16_t>(descriptor >> 16);
  return type < literal_type ? type : std::uint16_t{value_type::binary};
}

}  // namespace

void evtx_event_reader::start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                                    std::uint64_t file_offset) {
  fragment_ = false;
  budget_ = {};
  expansion_ = limits::expanded_bytes_per_chunk;
  new_shapes_ = limits::new_shape_bytes_per_chunk;
  begin_chunk({byte_cursor(bytes, file_offset), bound, file_offset, &budget_, &memory_});
}

void evtx_event_reader::start_fragment(std::span<const std::byte> chunk, std::uint64_t file_offset,
                                       std::uint64_t credit) {
  fragment_ = true;
  add_credit(std::min(credit, layout::chunk_bytes));
  begin_chunk({byte_cursor(chunk, file_offset), chunk.size(), file_offset, &budget_, &memory_});
}

void evtx_event_reader::add_credit(std::uint64_t bytes) {
  const auto add = [bytes](std::int64_t& left, std::int64_t most) {
    const std::int64_t share = most / static_cast<std::int64_t>(layout::chunk_bytes);
    left = std::min(most, left + share * static_cast<std::int64_t>(bytes));
  };
  const work_budget whole;
  add(budget_.slot_bytes, whole.slot_bytes);
  add(budget_.plain_bytes, whole.plain_bytes);
  add(budget_.slack_bytes, whole.slack_bytes);
  add(budget_.body_bytes, whole.body_bytes);
  add(budget_.layout_bytes, whole.layout_bytes);
  add(expansion_, limits::expanded_bytes_per_chunk);
  add(new_shapes_, limits::new_shape_bytes_per_chunk);
}

void evtx_event_reader::begin_chunk(const chunk_view& chunk) {
  chunk_ = chunk;
  memory_.start_chunk();
  ++chunk_number_;
  first_number_ = chunk_.bytes.at_or_zero<std::uint64_t>(layout::first_logical_record_at);
  last_number_ = chunk_.bytes.at_or_zero<std::uint64_t>(layout::nth_logical_record_at);
  places_.fill({});
  chunk_templates_.clear();
  // Shapes point into templates, so that they go together.
  const bool no_shapes = shapes_.drop_if_full();
  const bool no_bodies = bodies_.drop_if_full();
  if (no_shapes || no_bodies) {
    shapes_.clear();
    templates_.clear();
    missing_.clear();
    structures_.clear();
  }
}

bool evtx_event_reader::on_record(std::uint64_t offset) {
  read_event(offset, 0);
  return true;
}

void evtx_event_reader::on_slack_candidate(std::uint64_t offset, std::uint64_t) {
  read_event(offset, event_slack);
}

void evtx_event_reader::read_event(std::uint64_t offset, std::uint32_t flags) {
  const byte_cursor& bytes = chunk_.bytes;
  memory_.start_record();
  if (event_ids_ && is_unwanted(offset + layout::record_header_bytes)) return;
  event_header header;
  header.record_number = bytes.at_or_zero<std::uint64_t>(offset + 8);
  header.written = bytes.at_or_zero<std::uint64_t>(offset + 16);
  header.file_offset = chunk_.file_offset + offset;
  instances_.clear();
  slots_.clear();
  kinds_.clear();
  own_fragments_used_ = 0;
  cut_ = false;
  plain_ = false;
  // A record that a damaged size has put behind its chunk has its values there.
  value_end_ = offset < layout::chunk_bytes
                   ? std::min<std::uint64_t>(layout::chunk_bytes, bytes.size())
                   : bytes.size();
  read_fragment(offset + layout::record_header_bytes, value_end_, 0, 0);
  shapes_.trim();
  event_shape& shape = shape_of_event();
  if (header.record_number < first_number_ || header.record_number > last_number_) {
    flags |= event_outside_range;
  }
  flags |= flags_;
  if (cut_ || shape.cut) flags |= event_cut;
  if (shape.no_template) flags |= event_no_template;
  header.flags = flags;
  view_.assign(shape, instances_, slots_, header, *source_, bytes.bytes().data() + bytes.size());
  sink_.on_event(view_);
}

// The event's shape; one that cannot be paid for leaves the event with its header alone.
event_shape& evtx_event_reader::shape_of_event() {
  if (event_shape* shape = affordable_shape()) return *shape;
  cut_ = true;
  slots_.clear();
  kinds_.clear();
  instances_.assign(1, {missing_template(0, true), 0, 0, 0, 0});
  event_shape* empty = shapes_.find(instances_, kinds_);
  return empty ? *empty : shapes_.add(instances_, slots_, kinds_);
}

// A shape is paid for once in each chunk, whether it is known or not, so that what earlier chunks
// had changes nothing; one with binary XML of its own is paid for each time, since not all of them
// are kept. What is carved has little to pay with, and pays for what is new.
event_shape* evtx_event_reader::affordable_shape() {
  event_shape* shape = shapes_.find(instances_, kinds_);
  const bool paid = shape && (fragment_ || shape->paid_in_chunk == chunk_number_) && !plain_;
  if (!paid) {
    std::uint64_t bytes = 0;
    for (const event_instance& instance : instances_) bytes += instance.source_bytes;
    if (!work_budget::spend(new_shapes_, bytes)) return nullptr;
    if (!shape) shape = &shapes_.add(instances_, slots_, kinds_);
    shape->paid_in_chunk = chunk_number_;
  }
  for (const auto& [slot, uses] : shape->overused) {
    if (!work_budget::spend(expansion_, std::uint64_t{slots_[slot].size} * uses)) return nullptr;
  }
  return shape;
}

// Whether the event's id is at hand, in the one slot that holds it, and not asked for.
bool evtx_event_reader::is_unwanted(std::uint64_t fragment) {
  const byte_cursor& bytes = chunk_.bytes;
  const auto head = nested_instance_at(chunk_, fragment);
  if (!head || brings_definition(fragment + head->length, *head)) return false;
  const event_template* body = template_at(*head);
  if (!body || body->event_id_slot < 0) return false;
  const std::uint64_t table = fragment + head->length;
  const std::uint32_t count = bytes.at_or_zero<std::uint32_t>(table);
  const auto slot = static_cast<std::uint32_t>(body->event_id_slot);
  if (slot >= count || count > limits::slots_per_event_table) return false;
  std::uint64_t at = table + 4 + descriptor_bytes * std::uint64_t{count};
  for (std::uint32_t i = 0; i < slot; ++i) {
    at += bytes.at_or_zero<std::uint16_t>(table + 4 + descriptor_bytes * i);
  }
  const auto descriptor = bytes.at_or_zero<std::uint32_t>(table + 4 + descriptor_bytes * slot);
  constexpr std::uint32_t two_bytes = value_type::uint16 << 16 | 2;
  const auto id = bytes.at<std::uint16_t>(at);
  return descriptor == two_bytes && id && !event_ids_->test(*id);
}

// Reads the template instance or the plain binary XML at `offset` and what is nested in it. Returns
// its number among the instances; 0 for the outermost, and when there is nothing.
std::uint16_t evtx_event_reader::read_fragment(std::uint64_t offset, std::uint64_t end,
                                               unsigned depth, std::uint32_t parent_slot) {
  if (depth > limits::nesting_depth || instances_.size() > limits::instances_per_event) {
    cut_ = true;
    return 0;
  }
  event_instance instance;
  instance.parent_slot = parent_slot;
  instance.first_slot = static_cast<std::uint32_t>(slots_.size());
  if (const auto head = nested_instance_at(chunk_, offset)) {
    if (!read_instance(offset, *head, instance)) return 0;
  } else {
    instance.body = plain_body(offset, end, instance);
  }
  if (!instance.body) {
    if (depth != 0) return 0;
    instance.body = missing_template(0, true);
  }
  const bool plain = instance.source_bytes != 0;
  if (!plain) instance.source_bytes = instance.body->source_bytes;
  if (!work_budget::spend(expansion_, instance.source_bytes)) {
    cut_ = true;
    if (depth != 0) return 0;
    if (plain) instance.slot_count = 0;
    instance.body = missing_template(instance.slot_count, true);
    instance.source_bytes = 0;
  }
  const std::size_t number = instances_.size();
  instances_.push_back(instance);
  read_nested(number, depth);
  return static_cast<std::uint16_t>(number);
}

bool evtx_event_reader::read_instance(std::uint64_t offset, const instance_head& head,
                                      event_instance& instance) {
  const std::uint64_t behind = offset + head.length;
  std::uint64_t table = behind;
  if (brings_definition(behind, head)) {
    const auto size = chunk_.bytes.at<std::uint32_t>(behind + layout::definition_size_at);
    if (size) table = behind + layout::definition_head_bytes + *size;
  }
  instance.body = template_at(head);
  read_table(table, instance);
  if (!instance.body && fragment_) instance.body = from_library(behind, head, instance.slot_count);
  if (!instance.body) {
    instance.body = missing_template(instance.slot_count, instances_.empty());
  }
  return true;
}

// Whether the definition stands behind the instance's head. The place of a part may not be known,
// so that the head's offset tells nothing; its id does.
bool evtx_event_reader::brings_definition(std::uint64_t behind, const instance_head& head) const {
  if (head.definition == behind) return true;
  return fragment_ &&
         chunk_.bytes.at<std::uint32_t>(behind + layout::definition_guid_at) == head.template_id;
}

const event_template* evtx_event_reader::from_library(std::uint64_t behind,
                                                      const instance_head& head,
                                                      std::uint32_t slots) const {
  if (!library_) return nullptr;
  std::optional<guid_bytes> guid;
  if (brings_definition(behind, head)) guid = definition_guid(chunk_, behind);
  return library_->find(head.template_id, guid, slots);
}

void evtx_event_reader::read_table(std::uint64_t table, event_instance& instance) {
  const byte_cursor& bytes = chunk_.bytes;
  const std::uint32_t count = bytes.at_or_zero<std::uint32_t>(table);
  const auto descriptors = bytes.bytes_at(table + 4, descriptor_bytes * std::uint64_t{count});
  if (count == 0) return;
  if (count > limits::slots_per_event_table || descriptors.empty() ||
      !work_budget::spend(budget_.slot_bytes, 4 + descriptors.size())) {
    cut_ = true;
    return;
  }
  read_values(table, count, instance);
}

// The values of a table whose descriptors are all there, until they cost too much. Most tables end
// in their record, can be paid for as a whole and have only known types, so that no value needs a
// look of its own; their kinds are found in the same pass.
void evtx_event_reader::read_values(std::uint64_t table, std::uint32_t count,
                                    event_instance& instance) {
  const std::byte* const base = chunk_.bytes.bytes().data();
  const std::byte* const descriptors = base + table + 4;
  const std::uint64_t first = table + 4 + descriptor_bytes * std::uint64_t{count};
  static_assert(limits::slots_per_event_table <= 65536, "the sum of their sizes has 32 bits");
  std::uint32_t total = 0, types = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t descriptor = descriptor_at(descriptors, i);
    total += descriptor & 0xffff;
    types |= descriptor >> 16;
  }
  const std::size_t before = slots_.size();
  slots_.resize(before + count);
  event_value* const values = slots_.data() + before;
  instance.slot_count = count;
  if (first <= value_end_ && total <= value_end_ - first &&
      static_cast<std::int64_t>(total) < budget_.slot_bytes && types < literal_type) {
    (void)work_budget::spend(budget_.slot_bytes, total);
    place_values(descriptors, base + first, {values, count});
    return;
  }
  instance.slot_count = read_cut_values(descriptors, first, {values, count});
  slots_.resize(before + instance.slot_count);
  add_kinds(before);
}

// Values that are all there and of known types, and their kinds.
void evtx_event_reader::place_values(const std::byte* descriptors, const std::byte* at,
                                     std::span<event_value> values) {
  for (std::size_t begin = 0; begin < values.size(); begin += slots_a_word) {
    const std::size_t end = std::min(values.size(), begin + slots_a_word);
    std::uint64_t kinds = 0;
    for (std::size_t i = begin; i < end; ++i) {
      const std::uint32_t descriptor = descriptor_at(descriptors, i);
      const auto type = static_cast<std::uint16_t>(descriptor >> 16);
      values[i] = {at, descriptor & 0xffff, type, 0};
      at += descriptor & 0xffff;
      kinds |= std::uint64_t{kinds_of_types[type]} << 2 * (i - begin);
    }
    kinds_.push_back(kinds);
  }
}

// The same, value by value: returns how many there are.
std::uint32_t evtx_event_reader::read_cut_values(const std::byte* descriptors, std::uint64_t first,
                                                 std::span<event_value> values) {
  const std::byte* const base = chunk_.bytes.bytes().data();
  std::uint64_t at = first;
  for (std::uint32_t i = 0; i < values.size(); ++i) {
    const std::uint32_t descriptor = descriptor_at(descriptors, i);
    const std::uint64_t begin = std::min(at, value_end_);
    const auto size = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(descriptor & 0xffff, value_end_ - begin));
    cut_ = cut_ || size != (descriptor & 0xffff);
    if (!work_budget::spend(budget_.slot_bytes, size)) {
      cut_ = true;
      return i;
    }
    values[i] = {base + begin, size, type_of(descriptor), 0};
    at += descriptor & 0xffff;
  }
  return static_cast<std::uint32_t>(values.size());
}

// The kinds of an instance's slots, which are the last ones; they begin a word of their own.
void evtx_event_reader::add_kinds(std::size_t first) {
  for (std::size_t at = first; at < slots_.size(); at += slots_a_word) {
    const event_value* const begin = slots_.data() + at;
    const event_value* value = begin + std::min(slots_a_word, slots_.size() - at);
    std::uint64_t kinds = 0;
    while (value != begin) kinds = kinds << 2 | kinds_of_types[(--value)->type];
    kinds_.push_back(kinds);
  }
}

void evtx_event_reader::read_nested(std::size_t number, unsigned depth) {
  const std::uint32_t first = instances_[number].first_slot;
  const std::uint32_t count = instances_[number].slot_count;
  for (std::uint32_t i = first; i < first + count; ++i) {
    if (!slots_[i].is_nested() || slots_[i].size == 0) continue;
    const auto offset = static_cast<std::uint64_t>(slots_[i].data - chunk_.bytes.bytes().data());
    const std::uint16_t child = read_fragment(offset, offset + slots_[i].size, depth + 1, i);
    slots_[i].child = child;
  }
}

// A fragment that stands in the record: its structure as a template, which other records share, and
// its texts as the template's slots.
const event_template* evtx_event_reader::plain_body(std::uint64_t offset, std::uint64_t end,
                                                    event_instance& instance) {
  if (own_fragments_used_ == own_fragments_.size())
    own_fragments_.push_back(std::make_unique<own_fragment>());
  auto& [body, texts] = *own_fragments_[own_fragments_used_];
  texts.clear();
  body.once = false;
  if (!compile_fragment(chunk_, offset, end, budget_.plain_bytes, body, &texts)) return nullptr;
  ++own_fragments_used_;
  std::size_t begin = 0;
  for (const std::size_t end_of_text : texts.ends) {
    slots_.push_back({reinterpret_cast<const std::byte*>(texts.pool.data() + begin),
                      static_cast<std::uint32_t>(end_of_text - begin), literal_type, 0});
    begin = end_of_text;
  }
  instance.slot_count = static_cast<std::uint32_t>(texts.ends.size());
  instance.source_bytes = body.source_bytes;
  add_kinds(instance.first_slot);
  plain_ = true;
  if (const event_template* known = structures_.find(body)) return known;
  body.once = true;  // no room for another one
  return &body;
}

// One place for each definition; another that falls on it drives the first one out.
const event_template* evtx_event_reader::template_at(const instance_head& head) {
  place& known = places_[head.definition * hash_multiplier >> 40 & (places - 1)];
  if (known.definition == head.definition && known.template_id == head.template_id &&
      known.definition != 0) {
    return known.body;
  }
  known = {head.definition, head.template_id, nullptr};
  const auto size = chunk_.bytes.at<std::uint32_t>(head.definition + layout::definition_size_at);
  const auto id = chunk_.bytes.at<std::uint32_t>(head.definition + layout::definition_guid_at);
  if (head.definition == 0 || !size || !id) return nullptr;
  if (*id == head.template_id) known.body = known_template(head.definition, *size);
  if (!known.body && (!fragment_ || *id == head.template_id)) {
    known.body = chunk_template(head.definition, *size, *id == head.template_id && !fragment_);
  }
  if (known.body && library_) {
    if (const auto guid = definition_guid(chunk_, head.definition)) {
      library_->add(*guid, *known.body);
    }
  }
  return known.body;
}

// A template by its content, for the whole run; null for one of unusual form.
const event_template* evtx_event_reader::known_template(std::uint64_t definition,
                                                        std::uint32_t size) {
  const auto guid = definition_guid(chunk_, definition);
  if (!guid) return nullptr;
  const std::uint32_t id = bodies_.identify(chunk_, definition, size, *guid);
  if (id == 0) return nullptr;
  owned_template& body = templates_[id];
  if (body) return body.get();
  body = std::make_unique<event_template>();
  const std::uint64_t begin = definition + layout::definition_head_bytes;
  std::int64_t budget = limits::body_bytes_per_chunk;
  compile_fragment(chunk_, begin, begin + size, budget, *body);
  find_event_id_slot(*body);
  body->id = 2 * std::uint64_t{id};  // those of missing templates are odd
  return body.get();
}

// A template read for this chunk alone.
const event_template* evtx_event_reader::chunk_template(std::uint64_t definition,
                                                        std::uint32_t size, bool id_matches) {
  auto body = std::make_unique<event_template>();
  const std::uint64_t begin = definition + layout::definition_head_bytes;
  if (!compile_fragment(chunk_, begin, begin + size, budget_.body_bytes, *body)) return nullptr;
  // Under another id it may be anything: only one that is whole is taken for the template.
  if (!id_matches && body->cut) return nullptr;
  body->once = true;
  return chunk_templates_.emplace_back(std::move(body)).get();
}

// What stands in for a template that was not found: the values of its slots, without names.
const event_template* evtx_event_reader::missing_template(std::uint32_t slots, bool outermost) {
  owned_template& body = missing_[2 * slots + (outermost ? 1 : 0)];
  if (body) return body.get();
  body = std::make_unique<event_template>();
  body->id = 2 * (2 * std::uint64_t{slots} + (outermost ? 1 : 0)) + 1;
  body->missing = true;
  template_writer writer(*body);
  if (outermost) (void)writer.open("Event");
  if (slots != 0) (void)writer.open("EventData");
  for (std::uint32_t i = 0; i < slots; ++i) {
    (void)writer.open("Data");
    writer.slot(static_cast<std::uint16_t>(i), true);
    writer.close();
  }
  writer.close_all();
  return body.get();
}

}  // namespace zanvik
