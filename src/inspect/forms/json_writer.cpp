#include "inspect/forms/json_writer.h"

#include "base/digits.h"

namespace zanvik {
namespace {

// The length of the UTF-8 character at the start of `text`, or 0 if there is none.
std::size_t character_bytes(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < size) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
  }
  // Overlong, a surrogate, or beyond the last character.
  if (first == 0xe0 && byte(1) < 0xa0) return 0;
  if (first == 0xed && byte(1) > 0x9f) return 0;
  if (first == 0xf0 && byte(1) < 0x90) return 0;
  if (first == 0xf4 && byte(1) > 0x8f) return 0;
  return size;
}

}  // namespace

void append_json_text(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const std::size_t size = character_bytes(text);
    const auto c = static_cast<unsigned char>(text[0]);
    if (size == 0) {
      out += "\xef\xbf\xbd";
    } else if (c < 0x20 || c == 0x7f) {
      out += "\\u";
      append_hex(out, c, 4);
    } else {
      if (c == '"' || c == '\\') out += '\\';
      out += text.substr(0, size);
    }
    text.remove_prefix(size == 0 ? 1 : size);
  }
  out += '"';
}

void json_writer::next(std::string_view name) {
  if (!first_) out_ += ',';
  first_ = false;
  if (name.empty()) return;
  append_json_text(out_, name);
  out_ += ':';
}

void json_writer::open(std::string_view name, char bracket) {
  next(name);
  out_ += bracket;
  first_ = true;
}

void json_writer::close(char bracket) {
  out_ += bracket;
  first_ = false;
}

void json_writer::member(std::string_view name, bool value) {
  next(name);
  out_ += value ? "true" : "false";
}

void json_writer::member(std::string_view name, std::uint64_t value) {
  next(name);
  append_decimal(out_, value);
}

void json_writer::member(std::string_view name, std::string_view value) {
  next(name);
  append_json_text(out_, value);
}

void json_writer::element(std::uint64_t value) { member({}, value); }

}  // namespace zanvik
