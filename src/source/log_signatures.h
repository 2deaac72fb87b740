// The search for what logs begin with, at any offset of any bytes: chunks, records, legacy records.
//
// In: bytes in memory. Out: the places where a signature stands, one after the other; nothing about
// what is behind it. Bytes without any are passed over 64 at a time and are not copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zanvik {

enum class log_signature : std::uint8_t {
  none,
  chunk,   // "ElfChnk\0"
  record,  // "**\0\0"
  legacy,  // "LfLe"
};

struct signature_hit {
  log_signature kind = log_signature::none;
  std::size_t at = 0;
};

inline constexpr std::size_t longest_signature = 8;  // in bytes

// The first signature that begins at or behind `from` and `longest_signature` bytes or more before
// the end. Without any, `at` is where a search goes on when more bytes are there.
signature_hit find_signature(std::span<const std::byte> bytes, std::size_t from);

}  // namespace zanvik
