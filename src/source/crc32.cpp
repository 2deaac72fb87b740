#include "source/crc32.h"

#include <zlib.h>

#include <limits>

namespace zanvik {

std::uint32_t crc32_of(std::span<const std::byte> bytes, std::uint32_t seed) {
  static_assert(std::numeric_limits<z_size_t>::digits >= 64);
  return static_cast<std::uint32_t>(
      ::crc32_z(seed, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

}  // namespace zanvik
