// Numbers read from what an examiner types or a record holds, and numbers as text.
//
// There are four ways to read, each with its own idea of a prefix, because options and report
// commands rely on each. All of them stop at the first character that is no digit and keep what
// stood before it; digits that are missing altogether read as 0. Decimal and octal digits may have
// a sign; hexadecimal ones may also have a "0x" of their own. What is too big for 64 bits reads as
// the largest (or smallest) 64-bit value, and what is then too big for the result is cut to its
// low bits: "4294967297" reads as 1, "4294967295" as -1 where the result is signed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zanvik {

// Blanks and case do not matter. `x` in the second place: hexadecimal from the third ("0x10").
// Else `x` in the first: hexadecimal behind it; `o`: octal behind it. Else a leading `-`, `+` or
// digit: decimal. Else a character in single quotes: its code, in the case it was typed. Anything
// else is nothing.
std::optional<std::uint32_t> unsigned_from_text(std::string_view text);

// An `x` anywhere: hexadecimal from behind the first. Else an `o` anywhere: octal from behind it.
// Else a leading `-`, `+` or digit: decimal. Anything else, a leading blank too, is nothing.
// The letters count in lower case only.
std::optional<std::int32_t> signed_from_text(std::string_view text);

// As signed_from_text, its 32-bit result widened with its sign: "0xffffffff" is -1.
std::optional<std::int64_t> number_from_text(std::string_view text);

// Behind leading blanks: more than 2 characters with `x` in the second place, or `x` in the first:
// hexadecimal, at most 16 digits; `o` in the first: octal, at most 23; else decimal, at most 20.
// `x` and `o` in any case. More than 30 characters, too many digits or a blank behind the first
// digit are nothing. A text that holds no number at all reads as 0, one too big as all ones.
std::optional<std::uint64_t> u64_from_text(std::string_view text);

// Whether `text`, blanks at its ends aside, is a number and nothing else: decimal digits that may
// have a sign, hexadecimal ones behind "0x" or "x", or octal ones behind "o". What the functions
// above read out of other texts is seldom what was meant.
bool is_whole_number(std::string_view text);

// Decimal, or with `hex` "0x" and lower-case digits filled with zeros to `width`. A width of 0 goes
// by the value: 2 digits below 255 (not at it), 4 below 65535, 6 below 16777215, else 8.
std::string number_to_text(std::uint64_t value, bool hex, unsigned width);
// The same, at the end of `out`.
void append_number(std::string& out, std::uint64_t value, bool hex, unsigned width);

}  // namespace zanvik
