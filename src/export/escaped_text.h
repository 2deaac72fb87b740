// Text of events as JSON strings and as XML want it: UTF-8, with what a form reserves written as
// its escape, and with U+FFFD in place of what it cannot hold (lone surrogates; in XML control
// characters too), which sets `lossy`.
//
// The write_ functions write at `out` and return its end; they take at most `escaped_bound` bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace zanvik {

enum class escape_form {
  json,           // between the quotes of a JSON string
  xml_text,       // content of an element
  xml_attribute,  // between double quotes
  json_line,      // the same as `json`, with a blank for each control character
  csv,            // between the quotes of a cell
};

inline constexpr std::size_t escaped_bound(std::size_t bytes) { return 6 * bytes + 32; }

// UTF-16LE; `readable_end` is as far as memory may be read, which makes the end of a text cheaper.
template <escape_form form>
char* write_escaped_utf16(char* out, std::span<const std::byte> text, const std::byte* readable_end,
                          bool& lossy);
// Windows code page 1252.
template <escape_form form>
char* write_escaped_ansi(char* out, std::span<const std::byte> text, bool& lossy);
// UTF-8; bytes that are none become U+FFFD.
template <escape_form form>
char* write_escaped_utf8(char* out, std::string_view text, bool& lossy);

// UTF-8, appended.
void append_escaped(std::string& out, std::string_view text, escape_form form, bool& lossy);

// A name of an element or attribute as XML allows it: other characters become `_`, which sets
// `lossy`.
std::string xml_name(std::string_view name, bool& lossy);

}  // namespace zanvik
