#include "evtx/bxml/bxml_decoder.h"

#include <charconv>
#include <string_view>

#include "evtx/bxml/bxml_decode_state.h"
#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {

bxml_result bxml_decode::run() {
  if (fields_) fields_->clear();
  if (position_ > chunk_.bound || cursor_.depth > limits::nesting_depth) return {};
  const std::uint64_t begin = position_;
  const beginning begins = start();
  if (begins == beginning::refused) return {};
  if (begins == beginning::fragments) {
    run_fragments();
  } else if (has_tokens()) {
    run_fragment();
  }
  flush();
  // A stream that ends inside an open EventData does not take this step.
  if (!in_data_section_) fill_system(begin);
  return result_;
}

// Fragments, each with its header, which is not consumed here: the token handler does that.
void bxml_decode::run_fragments() {
  while (has_tokens() && !ended_ && bytes_.at<std::uint32_t>(position_) == expected_fragment) {
    const std::uint64_t before = position_;
    run_fragment();
    if (position_ == before) return;  // nothing was consumed, and nothing would be the next time
  }
}

void bxml_decode::fill_system(std::uint64_t begin) {
  field_map unwanted;
  field_map& fields = fields_ ? *fields_ : unwanted;
  fill_system_from_slots(fields, chunk_, begin);
  result_.any_fields = result_.any_fields || !fields.empty();
}

// The start of the stream: a template instance is consumed here, and refused if it cannot be read.
bxml_decode::beginning bxml_decode::start() {
  const auto consume_instance = [&](const instance_head& head) {
    const auto consumed = template_instance(head, position_);
    position_ += consumed;
    return consumed != 0 ? beginning::fragments : beginning::refused;
  };
  if (const auto head = fragment_instance_in(chunk_, position_, chunk_.bound)) {
    return consume_instance(*head);
  }
  if (bytes_.at<std::uint32_t>(position_) == expected_fragment) return beginning::fragments;
  if (const auto head = bare_instance_at(chunk_, position_); head && position_ + 4 < remaining_) {
    return head->definition > chunk_.bound ? beginning::refused : consume_instance(*head);
  }
  // An open element after four bytes that are not a fragment header is not special: there is no
  // template instance before it, so the stream is read as one without a header.
  template_body_ = false;
  return beginning::no_header;
}

// Reads tokens until the stream stops.
void bxml_decode::run_fragment() {
  after_substitution_ = false;
  while (position_ < bytes_.size()) {
    const auto token = bytes_.at_or_zero<std::uint8_t>(position_);
    if (!dispatch(token)) return;
    const bool ends = handler_of(token) == token_end_of_stream;
    if ((ends && !after_substitution_) || remaining_ == 0) return;
    // Meant: an end with other flags is passed over after a substitution.
    if (token == token_end_of_stream) return read_values_in_place();
  }
}

// The values of a template that was read in place. If slots are given, or in a template's body,
// they are known already and the stream ends.
void bxml_decode::read_values_in_place() {
  if (position_ >= bytes_.size() || cursor_.slots || template_body_) return;
  const auto length = walk_slot_table(position_);
  consume(length);
  ended_ = length == 0;  // after the table the stream continues with a fragment
}

std::uint64_t bxml_decode::consume(std::uint64_t length) {
  position_ += length;
  remaining_ -= length < remaining_ ? length : remaining_;
  return length;
}

// Handles one token; false stops the stream.
bool bxml_decode::dispatch(std::uint8_t token) {
  if (!spend(1)) return false;
  switch (handler_of(token)) {
    case token_end_of_stream:
      ended_ = true;
      after_reference_ = false;
      consume(1);
      return true;
    case token_open_element:
      return open_element(token);
    case token_close_start:
      after_reference_ = false;
      write(">");
      start_tag_open_ = false;
      consume(1);
      return true;
    case token_close_empty:
      close_empty_element();
      return true;
    case token_end_element:
      end_element();
      return true;
    case token_value:
      return value_text(token);
    case token_attribute:
      return attribute(token);
    case token_character_reference:
      return character_reference(token);
    case token_entity_reference:
      return entity_reference(token);
    case token_template_instance:
      return instance_inside();
    case token_normal_substitution:
      return substitution(false);
    case token_optional_substitution:
      return substitution(true);
    case token_fragment_header:
      return fragment_header();
    default:
      return false;
  }
}

// Makes fields of the current items. Each attribute's field repeats the name of the element and is
// charged for it: one long name could precede thousands.
void bxml_decode::flush() {
  if (slot_named_ || items_.size() < 2) return;
  if (!spend(items_.front().text.size() * (items_.size() / 2 - 1))) return;
  result_.any_fields = true;  // two items or more always give one
  if (fields_) flush_items(items_, *fields_, counters_, !cursor_.slots);
}

bool bxml_decode::open_element(std::uint8_t token) {
  flush();
  items_.clear();
  slot_named_ = false;
  const named_token element = element_at(chunk_, position_);
  write("\n<");
  if (element.length == 0 || !spend_token(element)) return false;
  result_.element_bytes += element.element_size;
  const std::string_view name = element.name.text;
  if (!name.empty()) push(name, static_cast<std::uint16_t>(token | data_bit()));
  if (is_data_section(name)) in_data_section_ = true;
  write(name);
  open_names_.push_back(name);
  consume(element.length);
  start_tag_open_ = true;
  return !element.name_past_end;
}

void bxml_decode::close_empty_element() {
  write("/>");
  if (!open_names_.empty()) open_names_.pop_back();
  start_tag_open_ = false;
  if (items_.size() == 1) items_.clear();
  consume(1);
}

void bxml_decode::end_element() {
  if (open_names_.empty()) {
    write("</...>");
  } else {
    const std::string_view name = open_names_.back();
    if (is_data_section(name)) in_data_section_ = false;
    write("</");
    write(name.empty() ? "..." : name);
    write(">");
    open_names_.pop_back();
  }
  after_reference_ = false;
  start_tag_open_ = false;
  consume(1);
}

bool bxml_decode::value_text(std::uint8_t token) {
  const auto units = bytes_.at<std::uint16_t>(position_ + 2);
  if (!units) return false;
  const auto bound =
      (static_cast<std::int64_t>(chunk_.bound) - static_cast<std::int64_t>(position_ + 2)) / 2 - 1;
  const bool fits = *units <= bound;
  const counted_text value =
      counted_text_at(chunk_, position_ + 4, *units, fits, 4, chunk_.memory->texts);
  if (!spend(4 + 2 * value.units_read)) return false;
  // Meant: an empty text, and one that reaches past the block, is written but gives no item.
  write("\"");
  write(value.text);
  write("\"");
  if (*units != 0 && fits && bytes_.has(position_ + 4, 2u * *units)) push_value(value.text, token);
  after_reference_ = false;
  consume(value.length);
  return true;
}

// A value that follows an attribute's value is different from that.
void bxml_decode::push_value(std::string_view text, std::uint8_t token) {
  std::uint16_t word = token;
  if (!items_.empty() && items_.back().word == token_value) word |= word_second_value;
  if (after_reference_) word |= word_chained;
  push(text, word);
}

bool bxml_decode::attribute(std::uint8_t token) {
  const named_token found = attribute_at(chunk_, position_);
  if (found.length == 0 || !spend_token(found)) return false;
  write(" ");
  write(found.name.text);
  write("=");
  if (!found.name.text.empty()) {
    push(found.name.text, static_cast<std::uint16_t>(token | data_bit()));
  }
  consume(found.length);
  return true;
}

// Pushes a reference as a chained item, and chains a value before it.
void bxml_decode::push_reference(std::string_view reference, std::uint8_t token) {
  const auto word = static_cast<std::uint16_t>(token | data_bit() | word_chained);
  if (!items_.empty() && (items_.back().word & token_value) == token_value) {
    items_.back().word |= word_chained;
  }
  push(reference, word);
}

bool bxml_decode::character_reference(std::uint8_t token) {
  const auto value = bytes_.at<std::uint16_t>(position_ + 1);
  if (!value || !is_token(token, token_character_reference) || !spend(3)) return false;
  char digits[5];
  const char* end = std::to_chars(digits, digits + sizeof(digits), *value).ptr;
  const std::string_view number(digits, static_cast<std::size_t>(end - digits));
  const std::string_view reference = chunk_.memory->texts.add_joined({"&#", number});
  write(reference);
  write(";");
  push_reference(reference, token);
  after_reference_ = true;
  consume(3);
  return true;
}

bool bxml_decode::entity_reference(std::uint8_t token) {
  const named_token found = entity_at(chunk_, position_);
  if (found.length == 0 || !spend_token(found)) return false;
  if (!found.name.text.empty()) {
    const auto reference = chunk_.memory->texts.add_joined({"&", found.name.text, ";"});
    write(reference);
    push_reference(reference, token);
  }
  after_reference_ = (token & token_more) != 0;
  consume(found.length);
  return true;
}

// A template instance after the start of a stream; those at the start are read by `start`. Meant:
// the form with a fragment header is expected, so a bare token passes only if the byte four further
// on happens to be one.
bool bxml_decode::instance_inside() {
  if (!is_token(bytes_.at_or_zero<std::uint8_t>(position_ + 4), token_template_instance)) {
    return false;
  }
  const instance_head head{bytes_.at_or_zero<std::uint32_t>(position_ + 6),
                           bytes_.at_or_zero<std::uint32_t>(position_ + 10),
                           evtx_layout::fragment_instance_bytes};
  return consume(template_instance(head, position_)) != 0;
}

bool bxml_decode::fragment_header() {
  if (bytes_.at<std::uint32_t>(position_) != expected_fragment) return false;
  consume(4);
  return true;
}

bxml_result decode_bxml(std::string* text, field_map* fields, const bxml_cursor& cursor,
                        std::uint64_t limit) {
  return bxml_decode(text, fields, cursor, limit).run();
}

}  // namespace zanvik
