// UTF-8 from UTF-16LE and from code points, the test for strict UTF-8, and the search for UTF-16
// text in a block of bytes.
//
// These use utf16_write.h, which the texts of a listing use directly to write into a buffer.
// Damaged UTF-16 is not an error: in a text with an unpaired surrogate each unit is converted
// alone, each surrogate to the 3 bytes of its number, so that a broken string is still shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

// Appends `code_point` as 1 to 4 bytes; surrogates need 3. Above 0x1fffff it is U+FFFD.
void append_utf8(std::string& out, char32_t code_point);

// Appends the text at `bytes`, up to a NUL unit or the end; an odd last byte is not a unit. A pair
// of surrogates is one character of 4 bytes, unless any surrogate of the text is unpaired: then
// every unit is converted alone. `out` grows by at most 3 bytes per unit. Returns the units
// consumed, without the NUL.
std::size_t append_utf8_from_utf16(std::string& out, std::span<const std::byte> bytes);

// Sets `out` to the text in the first `byte_length` of `bytes`, or in at most 500 units if it is
// -1. Returns the bytes used; with `count_terminator` this includes the 2 of a NUL unit that ended
// it. Wide text is held as UTF-8, so this serves for both.
std::size_t utf8_from_utf16(std::span<const std::byte> bytes, std::string& out,
                            std::ptrdiff_t byte_length = -1, bool count_terminator = false);

// True for text that the strict decoder accepts: lead bytes of 2, 3 and 4 byte forms with as many
// continuation bytes, and ASCII. Overlong forms and surrogates pass. Empty text does not.
bool is_strict_utf8(std::string_view text);

// A run of ASCII in UTF-16: the position of its first byte and its length in units.
struct utf16_run {
  std::size_t offset = 0;
  std::size_t units = 0;  // 0: no run
};

// The first run of at least `min_units` (and at least 1) that starts at `from` or later: bytes from
// 0x20 to 0x7e, with `accept_controls` also CR, LF and tab, each followed by a 0 byte. It may start
// at any byte but not with a blank. To continue, search from its end (`offset + 2 * units`).
utf16_run find_utf16_run(std::span<const std::byte> bytes, std::size_t from, std::size_t min_units,
                         bool accept_controls = false);

// Calls `use(run)` for each run in order; allocates nothing.
template <typename F>
void for_each_utf16_run(std::span<const std::byte> bytes, std::size_t min_units, F&& use) {
  for (auto run = find_utf16_run(bytes, 0, min_units); run.units != 0;
       run = find_utf16_run(bytes, run.offset + 2 * run.units, min_units)) {
    use(run);
  }
}

// Appends the characters of a run in `bytes`.
void append_run_text(std::string& out, std::span<const std::byte> bytes, utf16_run run);

// Texts and positions (`base_offset` + position) of all runs; both lists are cleared unless
// `append` is set. True if there is any.
bool find_utf16_strings(std::span<const std::byte> bytes, std::size_t min_chars,
                        std::vector<std::string>& texts, std::vector<std::uint64_t>& offsets,
                        std::uint64_t base_offset = 0, bool append = false,
                        bool accept_controls = false);

}  // namespace zanvik
