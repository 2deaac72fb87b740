#include "evtx/first_record.h"

#include "evtx/templates/template_record.h"

namespace zanvik {

std::optional<std::string> first_record_text(std::span<const std::byte> chunk) {
  work_budget budget;
  bxml_memory memory;
  const chunk_view view{byte_cursor(chunk), chunk.size(), 0, &budget, &memory};
  template_catalogue catalogue;
  catalogue.read(view);
  constexpr std::uint64_t bxml = evtx_layout::chunk_header_bytes + evtx_layout::record_header_bytes;
  std::string text;
  if (const auto head = fragment_instance_at(view, bxml)) {
    if (!read_template_record(catalogue, view, bxml, *head, &text)) return std::nullopt;
    return text;
  }
  bxml_cursor cursor{view};
  cursor.position = bxml;
  cursor.budget = &budget.plain_bytes;
  decode_bxml(&text, nullptr, cursor);
  return text;
}

}  // namespace zanvik
