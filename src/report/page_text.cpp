#include "report/page_text.h"

#include <array>
#include <cstdio>

namespace zanvik {
namespace {

struct code_point {
  char32_t value = 0;
  std::size_t bytes = 0;  // 0: the bytes are no UTF-8
};

// The code point at the start of `text`, which is not empty; shortest forms only.
code_point first_code_point(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return {};
  char32_t value = lead & (0x7f >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return {};
    value = value << 6 | (byte(i) & 0x3f);
  }
  constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = value >= 0xd800 && value < 0xe000;
  if (value < least[length] || value > 0x10ffff || surrogate) return {};
  return {value, length};
}

// Characters that change how others look, or that cannot be seen.
bool misleads(char32_t c) {
  return (c >= 0x80 && c < 0xa0) || c == 0xad || c == 0x34f || c == 0x61c || c == 0x115f ||
         c == 0x1160 || c == 0x17b4 || c == 0x17b5 || (c >= 0x180b && c <= 0x180f) ||
         (c >= 0x200b && c <= 0x200f) || (c >= 0x2028 && c <= 0x202e) ||
         (c >= 0x2060 && c <= 0x206f) || c == 0x3164 || (c >= 0xfe00 && c <= 0xfe0f) ||
         c == 0xfeff || c == 0xffa0 || (c >= 0xfff0 && c <= 0xfffb) || (c & 0xfffe) == 0xfffe ||
         (c >= 0xe0000 && c < 0xe1000);
}

// Escapes of one byte in JSON within HTML, or nothing.
std::string_view json_escape(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '<':
      return "\\u003c";
    case '>':
      return "\\u003e";
    case '&':
      return "\\u0026";
    default:
      return {};
  }
}

}  // namespace

void append_visible(std::string& out, std::string_view text, std::size_t most) {
  std::size_t at = 0;
  while (at < text.size()) {
    const code_point c = first_code_point(text.substr(at));
    const std::size_t bytes = c.bytes == 0 ? 1 : c.bytes;
    if (at + bytes > most) break;
    if (c.bytes == 0) {
      out += "\xef\xbf\xbd";
    } else if (c.value == '\r' && at + 1 < text.size() && text[at + 1] == '\n') {
      // The line end follows.
    } else if (c.value < 0x20 && c.value != '\n' && c.value != '\t') {
      out += "\xe2\x90";  // U+2400 and on: pictures of control characters
      out += static_cast<char>(0x80 + c.value);
    } else if (c.value == 0x7f) {
      out += "\xe2\x90\xa1";
    } else if (misleads(c.value)) {
      char number[16];
      std::snprintf(number, sizeof(number), "[U+%04X]", static_cast<unsigned>(c.value));
      out += number;
    } else {
      out += text.substr(at, bytes);
    }
    at += bytes;
  }
  if (at < text.size()) out += " [" + grouped(text.size() - at) + " bytes more]";
}

std::string visible(std::string_view text, std::size_t most) {
  std::string out;
  append_visible(out, text, most);
  return out;
}

void append_html(std::string& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
}

void append_json(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    const std::string_view escape = json_escape(c);
    if (!escape.empty()) {
      out += escape;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char number[8];
      std::snprintf(number, sizeof(number), "\\u%04x", static_cast<unsigned>(c));
      out += number;
    } else {
      out += c;
    }
  }
  out += '"';
}

std::size_t json_bytes(std::string_view text) {
  std::size_t bytes = text.size() + 2;
  for (const char c : text) {
    const std::size_t escape = json_escape(c).size();
    if (escape != 0) bytes += escape - 1;
  }
  return bytes;
}

std::string grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, ",");
  return text;
}

}  // namespace zanvik
