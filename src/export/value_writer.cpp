#include "export/value_writer.h"

#include <algorithm>

#include "base/digits.h"

namespace zanvik {

template <escape_form form>
bool value_sink::wide_text(std::span<const std::byte> text) {
  if (text.empty()) return false;
  while (!text.empty()) {
    std::size_t bytes = std::min(text.size(), piece_bytes);
    // A pair of surrogates stays together.
    const bool high = (std::to_integer<unsigned>(text[bytes - 1]) & 0xfc) == 0xd8;
    if (bytes < text.size() && high) bytes -= 2;
    char* at = out_.room(escaped_bound(bytes));
    out_.commit(write_escaped_utf16<form>(at, text.first(bytes), readable_end_, lossy_));
    text = text.subspan(bytes);
  }
  return true;
}

template <escape_form form>
bool value_sink::ansi_text(std::span<const std::byte> text) {
  const bool any = !text.empty();
  while (!text.empty()) {
    const std::size_t bytes = std::min(text.size(), piece_bytes);
    char* at = out_.room(escaped_bound(bytes));
    out_.commit(write_escaped_ansi<form>(at, text.first(bytes), lossy_));
    text = text.subspan(bytes);
  }
  return any;
}

template <escape_form form>
bool value_sink::utf8_text(std::string_view text) {
  const bool any = !text.empty();
  while (!text.empty()) {
    std::size_t bytes = std::min(text.size(), piece_bytes);
    // A character stays in one piece.
    for (unsigned i = 0; i < 3 && bytes < text.size() && (text[bytes] & 0xc0) == 0x80; ++i) --bytes;
    char* at = out_.room(escaped_bound(bytes));
    out_.commit(write_escaped_utf8<form>(at, text.substr(0, bytes), lossy_));
    text.remove_prefix(bytes);
  }
  return any;
}

template <escape_form form>
bool value_sink::array_text(const event_value& value) {
  event_value rest = value;
  event_value item;
  bool any = false;
  for (bool first = true; next_item(rest, item); first = false) {
    if (!first) out_.append(", ");
    any = text<form>(item) || any || !first;
  }
  return any;
}

bool value_sink::plain(const event_value& value) {
  event_value rest = value;
  if (value.size > piece_bytes) {  // bytes, as many as a legacy record can have
    rest.type = value_type::binary;
  }
  bool any = false;
  do {
    event_value piece = rest;
    piece.size = static_cast<std::uint32_t>(std::min<std::size_t>(rest.size, piece_bytes));
    char* at = out_.room(plain_value_bound(piece));
    char* const end = write_plain_value(at, piece);
    any = any || end != at;
    out_.commit(end);
    rest.data += piece.size;
    rest.size -= piece.size;
  } while (rest.size != 0);
  return any;
}

template <escape_form form>
bool value_sink::text(const event_value& value) {
  switch (class_of(value)) {
    case value_class::absent:
      return false;
    case value_class::utf16:
      return wide_text<form>(text_bytes(value));
    case value_class::ansi:
      return ansi_text<form>(text_bytes(value));
    case value_class::utf8:
      return utf8_text<form>({reinterpret_cast<const char*>(value.data), value.size});
    case value_class::array:
      return array_text<form>(value);
    default:
      return plain(value);
  }
}
template bool value_sink::text<escape_form::json>(const event_value&);
template bool value_sink::text<escape_form::xml_text>(const event_value&);
template bool value_sink::text<escape_form::xml_attribute>(const event_value&);
template bool value_sink::text<escape_form::json_line>(const event_value&);
template bool value_sink::text<escape_form::csv>(const event_value&);

void value_sink::json_value(const event_value& value) {
  switch (class_of(value)) {
    case value_class::absent:
      out_.append("null");
      return;
    case value_class::number:
    case value_class::boolean:
      plain(value);
      return;
    case value_class::array:
      put('[');
      json_items(value);
      out_.take_back(',');
      put(']');
      return;
    default:
      put('"');
      text<escape_form::json>(value);
      put('"');
  }
}

void value_sink::json_datum(const event_value& value) {
  if (!value.is_array()) return json_value(value);
  event_value rest = value;
  event_value item;
  if (next_item(rest, item) && rest.size == 0) return json_value(item);
  json_value(value);
}

void value_sink::json_items(const event_value& value) {
  event_value rest = value;
  event_value item;
  while (next_item(rest, item)) {
    json_value(item);
    put(',');
  }
}

void value_sink::json_number(const event_value& value) {
  std::uint64_t number = 0;
  if (class_of(value) == value_class::number) {
    plain(value);
  } else if (as_unsigned(value, number)) {
    char* at = out_.room(24);
    out_.commit(write_decimal(at, number));
  } else {
    out_.append("null");
  }
}

void value_sink::json_text_items(const event_value& value) {
  event_value rest = value;
  event_value item = value;
  for (bool more = !value.is_array() || next_item(rest, item); more;
       more = value.is_array() && next_item(rest, item)) {
    put('"');
    text<escape_form::json>(item);
    out_.append("\",");
  }
}

bool value_sink::csv_formula_text(const event_value& value) {
  switch (first_character(value)) {
    case '=':
    case '+':
    case '-':
    case '@':
    case '\t':
    case '\r':
      put('\'');
      break;
    default:
      break;
  }
  return text<escape_form::csv>(value);
}

char value_sink::first_character(const event_value& value) {
  event_value item = value;
  if (value.is_array()) {
    event_value rest = value;
    if (!next_item(rest, item)) return 0;
  }
  switch (class_of(item)) {
    case value_class::utf16:
    case value_class::ansi: {
      const auto bytes = text_bytes(item);
      const bool ascii =
          item.type == value_type::ansi || (bytes.size() > 1 && bytes[1] == std::byte{0});
      return bytes.empty() || !ascii ? '\0' : static_cast<char>(bytes[0]);
    }
    case value_class::utf8:
      return item.size == 0 ? '\0' : static_cast<char>(item.data[0]);
    case value_class::number: {
      char digits[plain_number_bound];
      write_plain_value(digits, item);
      return digits[0];
    }
    default:
      return 0;
  }
}

void value_sink::xml_element(const event_value& value, std::string_view close) {
  put('>');
  if (text<escape_form::xml_text>(value)) {
    out_.append(close);
  } else {
    out_.take_back('>');
    out_.append("/>");
  }
}

void value_sink::xml_repeated(const event_value& value, std::string_view open,
                              std::string_view close) {
  event_value rest = value;
  event_value item;
  bool any = false;
  while (next_item(rest, item)) {
    any = true;
    out_.append(open);
    xml_element(item, close);
  }
  if (any) return;
  out_.append(open);
  out_.append("/>");
}

}  // namespace zanvik
