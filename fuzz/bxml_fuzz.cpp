// A binary XML stream, alone, with the slots of a table somewhere in it, or as a record with its
// templates.
#include "evtx/bxml/bxml_decoder.h"
#include "evtx/bxml/slot_table.h"
#include "evtx/templates/template_record.h"
#include "fuzz_target.h"

namespace zanvik::fuzz {
namespace {

std::size_t size_of(const field_map& fields) {
  std::size_t size = 0;
  for (const auto& [name, value] : fields) size += name.size() + value.text.size();
  return size;
}

std::size_t size_of(const std::vector<slot_entry>& slots) {
  std::size_t size = 0;
  for (const slot_entry& slot : slots) {
    size += slot.name.size() + slot.text.size() + size_of(slot.children);
  }
  return size;
}

// Even if only a part of the chunk exists, a slot's offset is one in a whole chunk.
void require_within_chunk(const std::vector<slot_entry>& slots) {
  for (const slot_entry& slot : slots) {
    require(slot.offset <= evtx_layout::chunk_bytes, "a slot begins in the chunk");
    require_within_chunk(slot.children);
  }
}

// How much text the work budget of a whole chunk allows.
constexpr std::size_t most_text = 32u << 20;

}  // namespace

ZANVIK_FUZZ_TARGET(bxml) {
  input in(bytes);
  const auto mode = in.take<std::uint8_t>();
  const auto table = in.take<std::uint16_t>();
  const exact_bytes stream(in.rest());
  work_budget budget;
  bxml_memory memory;
  const chunk_view chunk{byte_cursor(stream.span()), stream.span().size(), 0, &budget, &memory};
  std::vector<slot_entry> slots;
  field_map fields;
  std::string text;
  if (mode & 1) (void)parse_substitution_array(chunk, table, slots);
  const auto head = fragment_instance_at(chunk, 0);
  if ((mode & 2) && head) {
    template_catalogue catalogue;
    auto content = read_template_record(catalogue, chunk, 0, *head, &text);
    if (!content) return;
    slots = std::move(content->slots);
    fields = std::move(content->fields);
  } else {
    bxml_cursor cursor{chunk};
    cursor.slots = mode & 1 ? &slots : nullptr;
    cursor.template_body = mode & 4;
    cursor.budget = &budget.plain_bytes;
    decode_bxml(mode & 8 ? nullptr : &text, &fields, cursor, mode & 16 ? table : no_limit);
    fill_system_from_slots(fields, chunk, 0);
  }
  require_within_chunk(slots);
  require(text.size() + size_of(fields) + size_of(slots) <= most_text, "texts are in proportion");
}

}  // namespace zanvik::fuzz
