// Asks the processor for memory that will be read soon.
//
// A group's records are scattered among those of other groups, so each one, and its values, would
// cause a wait: asking ahead makes a table of 150,000 rows twice as fast. Only a hint; any address
// may come in, and nothing is read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik {

inline constexpr std::size_t records_ahead = 12;  // how long before its turn a record is requested
inline constexpr std::size_t values_ahead = 3;    // and its values
inline constexpr std::size_t value_bytes_ahead = 512;

inline void prefetch_bytes(const void* from, std::size_t size) {
  const auto address = reinterpret_cast<std::uintptr_t>(from);  // the end may lie past the block
  for (std::size_t at = 0; at < size; at += 64) {
    __builtin_prefetch(reinterpret_cast<const void*>(address + at));
  }
}

}  // namespace zanvik
