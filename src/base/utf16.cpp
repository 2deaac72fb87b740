#include "base/utf16.h"

#include <algorithm>

#include "base/utf16_write.h"

namespace zanvik {
namespace {

constexpr std::size_t units_without_length = 500;

// The maximum size that write_utf8_from_utf16 needs for a text of `units`.
constexpr std::size_t writing_room(std::size_t units) { return 3 * units + 8; }

// Units up to the first NUL or the end.
std::size_t units_to_nul(std::span<const std::byte> bytes) {
  const std::size_t count = bytes.size() / 2;
  std::size_t units = 0;
  while (units < count && (bytes[2 * units] | bytes[2 * units + 1]) != std::byte{0}) ++units;
  return units;
}

// How many continuation bytes a lead byte needs; -1 if it is not a lead byte.
int continuation_bytes(unsigned char lead) {
  if (lead < 0x80) return 0;
  if ((lead & 0xe0) == 0xc0) return 1;
  if ((lead & 0xf0) == 0xe0) return 2;
  if ((lead & 0xf8) == 0xf0) return 3;
  return -1;
}

bool is_run_text(std::byte b, bool accept_controls) {
  const auto c = std::to_integer<unsigned char>(b);
  if (c >= 0x20 && c <= 0x7e) return true;
  return accept_controls && (c == '\r' || c == '\n' || c == '\t');
}

}  // namespace

void append_utf8(std::string& out, char32_t code_point) {
  char bytes[4];
  const char* end = write_utf8(bytes, code_point <= 0x1fffff ? code_point : 0xfffd);
  out.append(bytes, static_cast<std::size_t>(end - bytes));
}

std::size_t append_utf8_from_utf16(std::string& out, std::span<const std::byte> bytes) {
  std::size_t units = 0;
  char block[writing_room(128)];
  if (writing_room(bytes.size() / 2) <= sizeof block) {
    const char* end = write_utf8_from_utf16(block, bytes, units);
    out.append(block, static_cast<std::size_t>(end - block));
    return units;
  }
  // A text may end long before its bytes do; only what it needs is reserved.
  const auto text = bytes.first(2 * units_to_nul(bytes));
  const std::size_t size = out.size();
  out.resize(size + writing_room(text.size() / 2));
  const char* end = write_utf8_from_utf16(out.data() + size, text, units);
  out.resize(static_cast<std::size_t>(end - out.data()));
  return units;
}

std::size_t utf8_from_utf16(std::span<const std::byte> bytes, std::string& out,
                            std::ptrdiff_t byte_length, bool count_terminator) {
  out.clear();
  const std::size_t limit =
      byte_length < 0 ? 2 * units_without_length : static_cast<std::size_t>(byte_length);
  const auto text = bytes.first(std::min(bytes.size(), limit));
  const std::size_t used = 2 * append_utf8_from_utf16(out, text);
  // Units are left, so a NUL ended the text.
  return count_terminator && text.size() - used >= 2 ? used + 2 : used;
}

bool is_strict_utf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const int tail = continuation_bytes(static_cast<unsigned char>(text[at++]));
    if (tail < 0 || static_cast<std::size_t>(tail) > text.size() - at) return false;
    for (int i = 0; i < tail; ++i) {
      if ((static_cast<unsigned char>(text[at++]) & 0xc0) != 0x80) return false;
    }
  }
  return !text.empty();
}

utf16_run find_utf16_run(std::span<const std::byte> bytes, std::size_t from, std::size_t min_units,
                         bool accept_controls) {
  utf16_run run;
  for (std::size_t at = from; at < bytes.size() && bytes.size() - at >= 2;) {
    const bool leading_blank = run.units == 0 && bytes[at] == std::byte{' '};
    if (bytes[at + 1] == std::byte{0} && is_run_text(bytes[at], accept_controls) &&
        !leading_blank) {
      if (run.units++ == 0) run.offset = at;
      at += 2;
      continue;
    }
    if (run.units != 0 && run.units >= min_units) return run;
    run = {};
    ++at;
  }
  return run.units >= min_units ? run : utf16_run{};
}

void append_run_text(std::string& out, std::span<const std::byte> bytes, utf16_run run) {
  for (std::size_t i = 0; i < run.units; ++i) {
    out += std::to_integer<char>(bytes[run.offset + 2 * i]);
  }
}

bool find_utf16_strings(std::span<const std::byte> bytes, std::size_t min_chars,
                        std::vector<std::string>& texts, std::vector<std::uint64_t>& offsets,
                        std::uint64_t base_offset, bool append, bool accept_controls) {
  if (!append) {
    texts.clear();
    offsets.clear();
  }
  bool found = false;
  for (utf16_run run = find_utf16_run(bytes, 0, min_chars, accept_controls); run.units != 0;
       run = find_utf16_run(bytes, run.offset + 2 * run.units, min_chars, accept_controls)) {
    append_run_text(texts.emplace_back(), bytes, run);
    offsets.push_back(base_offset + run.offset);
    found = true;
  }
  return found;
}

}  // namespace zanvik
