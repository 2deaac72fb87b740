#include "events/event_template.h"

#include "base/limits.h"

namespace zanvik {

void find_event_id_slot(event_template& out) {
  using kind = template_token_kind;
  static constexpr std::string_view path[] = {"Event", "System", "EventID"};
  std::size_t depth = 0;    // of open elements
  std::size_t matched = 0;  // how many of them are the path
  bool in_content = false;  // of the element itself
  std::int32_t found = -1;
  for (const template_token& token : out.tokens) {
    switch (token.kind) {
      case kind::open_element:
        if (matched == depth && depth < 3 && out.text_of(token) == path[depth]) ++matched;
        ++depth;
        in_content = false;
        break;
      case kind::end_start_tag:
        in_content = depth == 3 && matched == 3;
        break;
      case kind::end_element:
        // The first EventID counts; with another one, or a part beside it, the slot is not the
        // whole of it.
        --depth;
        if (matched > depth) matched = depth;
        in_content = false;
        break;
      case kind::slot:
      case kind::text:
        if (!in_content) break;
        if (found != -1 || token.kind == kind::text) return;
        found = token.slot;
        break;
      default:
        break;
    }
  }
  out.event_id_slot = found;
}

void template_writer::add(template_token_kind kind, std::string_view piece) {
  template_token token;
  token.kind = kind;
  token.text = static_cast<std::uint32_t>(out_.pool.size());
  token.text_bytes = static_cast<std::uint32_t>(piece.size());
  out_.pool.append(piece);
  out_.tokens.push_back(token);
}

bool template_writer::open(std::string_view name) {
  if (depth_ >= limits::element_depth) return false;
  end_start_tag();
  add(template_token_kind::open_element, name);
  ++depth_;
  in_start_tag_ = true;
  return true;
}

void template_writer::attribute(std::string_view name) {
  if (in_start_tag_) add(template_token_kind::attribute, name);
}

void template_writer::end_start_tag() {
  if (!in_start_tag_) return;
  add(template_token_kind::end_start_tag, {});
  in_start_tag_ = false;
}

void template_writer::text(std::string_view piece) { add(template_token_kind::text, piece); }

void template_writer::slot(std::uint16_t number, bool optional) {
  add(template_token_kind::slot, {});
  out_.tokens.back().slot = number;
  out_.tokens.back().optional = optional;
}

void template_writer::instruction(std::string_view target, std::string_view data) {
  end_start_tag();
  add(template_token_kind::pi_target, target);
  add(template_token_kind::pi_data, data);
}

void template_writer::close() {
  if (depth_ == 0) return;
  end_start_tag();
  add(template_token_kind::end_element, {});
  --depth_;
}

void template_writer::close_all() {
  while (depth_ != 0) close();
}

}  // namespace zanvik
