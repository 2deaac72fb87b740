#include "evtx/first_record.h"

#include "evtx/template_record.h"

namespace zanvik {

std::optional<std::string> first_record_text(std::span<const std::byte> chunk) {
  work_budget budget;
  const chunk_view view{byte_cursor(chunk), chunk.size(), 0, &budget};
  template_catalogue catalogue;
  catalogue.read(view);
  constexpr std::uint64_t bxml = evtx_layout::chunk_header_bytes + evtx_layout::record_header_bytes;
  const auto head = fragment_instance_at(view, bxml);
  if (!head) return std::nullopt;
  std::string text;
  if (!read_template_record(catalogue, view, bxml, *head, &text)) return std::nullopt;
  return text;
}

}  // namespace zanvik
