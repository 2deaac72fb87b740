// CRC-32 as in the headers of .evtx logs, by zlib. The only file that uses that library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zanvik {

// `seed` is the value of the bytes before.
std::uint32_t crc32_of(std::span<const std::byte> bytes, std::uint32_t seed = 0);

}  // namespace zanvik
