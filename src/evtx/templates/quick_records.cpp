#include "evtx/templates/quick_records.h"

#include <algorithm>
#include <cstring>

#include "evtx/templates/template_record.h"
#include "evtx/values/value_text.h"

namespace zanvik {
namespace {

// The cost of a slot's value, as `value_source_bytes` gives it for values inside their chunk, in
// one word: a mask for its size, a fixed cost after it, and a bit for types that cost more (binary
// XML, and texts whose length depends on their bytes).
constexpr std::uint32_t sized_cost = 0xffff;
constexpr unsigned fixed_cost_shift = 16;
constexpr std::uint32_t special_cost = 0x80000000;

constexpr auto slot_costs = [] {
  std::array<std::uint32_t, value_sources.size()> costs{};
  for (std::size_t type = 0; type < costs.size(); ++type) {
    const value_source source = value_sources[type];
    if (source == value_source::sized) costs[type] = sized_cost;
    if (source == value_source::fixed) costs[type] = fixed_source_bytes << fixed_cost_shift;
    if (source == value_source::to_nul) costs[type] = special_cost;
    if (source == value_source::composed) costs[type] = special_cost;
  }
  return costs;
}();

}  // namespace

const known_template* quick_records::first_template(const chunk_view& chunk, std::uint64_t bxml,
                                                    const instance_head& head) {
  if (const known_template* known = store_.find(head.definition)) return known;
  const template_ref* ref =
      resolve_first_reference(store_.catalogue(), chunk, bxml, head.template_id, head.definition);
  const auto size =
      chunk.bytes.at<std::uint32_t>(head.definition + evtx_layout::definition_size_at);
  return ref && size ? store_.enter(chunk, head.definition, *size, *ref) : nullptr;
}

// The nested template instance at `value` and the values after it.
bool quick_records::read_nested_template(const chunk_view& chunk, std::uint64_t value,
                                         const instance_head& head) {
  if (head.definition > chunk.bound) return false;
  const known_template* known = store_.find(head.definition);
  if (!known) {
    const auto named = definition_at(chunk, head.definition, head.template_id);
    if (!named) return false;
    store_.catalogue().add(*named);
    const template_ref* ref = store_.catalogue().find(named->guid);
    known = store_.enter(chunk, head.definition, named->size_record, *ref);
    if (!known) return false;
  }
  std::uint32_t first_of_guid;
  std::memcpy(&first_of_guid, known->ref.guid.data(), sizeof(first_of_guid));
  if (first_of_guid != head.template_id) return false;  // it names no template
  std::uint64_t table = value + head.length;
  if (head.definition == table) {
    // User data is decoded in place and then by the catalogue: these must be the same.
    if (known->ref.definition != head.definition) return false;
    table += evtx_layout::definition_head_bytes + known->size_record;
  }
  key_.second = known->ref.definition;
  key_.second_body = known->body;
  return walk_table<true>(chunk, table);
}

// The plain binary XML at `value`. Such a value is also tried as a slot table, which its first word
// must rule out.
bool quick_records::read_plain_value(const chunk_view& chunk, std::uint64_t value) {
  if (key_.plain_slot != 0) return false;
  const auto first = chunk.bytes.at<std::uint32_t>(value);
  if (!first || *first <= limits::slots_per_table) return false;
  plain_text_.clear();
  constexpr unsigned depth = 0;
  return decode_plain_value(chunk, value, depth, &plain_text_);
}

// The binary XML in own slot `slot`, whose entry is the newest of `slots_`.
bool quick_records::read_nested(const chunk_view& chunk, std::uint64_t value, std::uint32_t slot) {
  if (const auto head = nested_instance_at(chunk, value)) {
    if (key_.second != 0) return false;  // a second nested template
    key_.nested_slot = static_cast<std::uint16_t>(slot);
    return read_nested_template(chunk, value, *head);
  }
  if (!read_plain_value(chunk, value)) return false;
  key_.plain_slot = static_cast<std::uint16_t>(slot + 1);
  plain_slot_ = slot_count_ - 1;
  return true;
}

// Adds the values of a slot table to `slots_`. False if the table is not an ordinary one.
template <bool children>
bool quick_records::walk_table(const chunk_view& chunk, std::uint64_t table) {
  constexpr std::uint64_t least_bytes = 8;  // of a table, including an empty one
  if (table > evtx_layout::chunk_bytes - least_bytes) return false;
  const auto count = chunk.bytes.at<std::uint32_t>(table);
  if (!count || *count > limits::slots_per_table) return false;
  const auto descriptors = chunk.bytes.bytes_at(table + 4, 4 * std::uint64_t{*count});
  if (descriptors.size() != 4u * *count) return false;
  (children ? key_.children : key_.slots) = static_cast<std::uint16_t>(*count);
  auto value = static_cast<std::uint32_t>(table + 4 + descriptors.size());
  std::uint64_t cost = 4 + descriptors.size();
  record_slot* out = slots_.data() + slot_count_;
  for (std::uint16_t i = 0; i < *count; ++i) {
    std::uint32_t word;
    std::memcpy(&word, descriptors.data() + 4 * std::size_t{i}, sizeof(word));
    const std::uint32_t size = word & 0xffff;
    const std::uint32_t type = word >> 16;
    *out++ = {value, static_cast<std::uint16_t>(size), static_cast<std::uint16_t>(type), 0,
              static_cast<std::uint16_t>(children ? i + 1 : 0)};
    const std::uint32_t known = type < slot_costs.size() ? slot_costs[type] : 0;
    cost += (size & known) + (known >> fixed_cost_shift & 0xff);
    if ((known & special_cost) != 0) [[unlikely]] {
      if (value >= evtx_layout::chunk_bytes) return false;
      slot_count_ = static_cast<std::size_t>(out - slots_.data());
      if (type == value_type::ansi) {
        const auto sixteen = [](std::uint32_t n) { return static_cast<std::uint16_t>(n); };
        cost += ansi_length(raw_value_at(chunk.bytes, value, sixteen(type), sixteen(size)));
      } else if (children || !read_nested(chunk, value, i)) {
        return false;
      }
      out = slots_.data() + slot_count_;
    }
    value += size;
  }
  slot_count_ = static_cast<std::size_t>(out - slots_.data());
  cost_ += cost;
  // A value that ends at the chunk's end counts as cut.
  return value < evtx_layout::chunk_bytes || *count == 0;
}

quick_records::answer quick_records::read(const chunk_view& chunk, std::uint64_t bxml,
                                          const instance_head& head) {
  slot_count_ = 0;
  key_ = {};
  cost_ = 0;
  if (bxml > evtx_layout::chunk_bytes) return answer::unusual;
  const known_template* known = first_template(chunk, bxml, head);
  if (!known) return answer::unusual;
  std::uint64_t table = bxml + head.length;
  if (head.definition == table) table += evtx_layout::definition_head_bytes + known->size_record;
  key_.first = known->ref.definition;
  key_.first_body = known->body;
  if (!walk_table<false>(chunk, table)) return answer::unusual;
  if (!work_budget::spend(chunk.budget->slot_bytes, cost_)) return answer::too_much;
  // A text whose budget ran out in the middle would be misread.
  if (key_.plain_slot != 0 && chunk.budget->plain_bytes <= 0) return answer::too_much;
  const auto found = store_.layout_for(chunk, key_);
  layout_ = found.layout;
  if (found.kind == template_store::answer::mismatch) return answer::unusual;
  return layout_ ? answer::ordinary : answer::too_much;
}

}  // namespace zanvik
