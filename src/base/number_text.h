// Numbers read from what a user types or a record contains, and numbers as text.
//
// There are four ways to read, each with its own rules for prefixes, because options and report
// commands depend on each. All stop at the first character that is not a digit and keep what came
// before it; missing digits read as 0. Decimal and octal digits may have a sign; hexadecimal ones
// may also have their own "0x". A number too big for 64 bits reads as the largest (or smallest)
// 64-bit value, and one too big for the result is cut to its low bits: "4294967297" reads as 1,
// "4294967295" as -1 where the result is signed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zanvik {

// Blanks and case do not matter. `x` in the second place: hexadecimal from the third ("0x10"). Else
// `x` in the first: hexadecimal after it; `o`: octal after it. Else a leading `-`, `+` or digit:
// decimal. Else a character in single quotes: its code, in the case it was typed. Anything else is
// no number.
std::optional<std::uint32_t> unsigned_from_text(std::string_view text);

// An `x` anywhere: hexadecimal from after the first. Else an `o` anywhere: octal from after it.
// Else a leading `-`, `+` or digit: decimal. Anything else, including a leading blank, is no
// number. The letters count in lower case only.
std::optional<std::int32_t> signed_from_text(std::string_view text);

// As signed_from_text, its 32-bit result widened with its sign: "0xffffffff" is -1.
std::optional<std::int64_t> number_from_text(std::string_view text);

// After leading blanks: more than 2 characters with `x` in the second place, or `x` in the first:
// hexadecimal, at most 16 digits; `o` in the first: octal, at most 23; else decimal, at most 20.
// `x` and `o` in any case. More than 30 characters, too many digits or a blank after the first
// digit are no number. A text without any number reads as 0, one too big as all ones.
std::optional<std::uint64_t> u64_from_text(std::string_view text);

// Whether `text`, apart from blanks at its ends, is a number and nothing else: decimal digits with
// an optional sign, hexadecimal ones after "0x" or "x", or octal ones after "o". What the functions
// above read from other texts is rarely what was meant.
bool is_whole_number(std::string_view text);

// Decimal, or with `hex` "0x" and lower-case digits padded with zeros to `width`. With a width of 0
// the value decides: 2 digits below 255 (not at it), 4 below 65535, 6 below 16777215, else 8.
std::string number_to_text(std::uint64_t value, bool hex, unsigned width);
// The same, at the end of `out`.
void append_number(std::string& out, std::uint64_t value, bool hex, unsigned width);

}  // namespace zanvik
