// Checksums, by zlib and OpenSSL. This is the only file that knows either library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace zanvik {

// CRC-32 as the headers of .evtx logs hold it; `seed` is the value of the bytes before.
std::uint32_t crc32_of(std::span<const std::byte> bytes, std::uint32_t seed = 0);

// The SHA-256 of bytes that come in pieces.
class sha256 {
 public:
  sha256();
  ~sha256();
  void add(std::span<const std::byte> bytes);
  // 64 lower-case hexadecimal digits, empty when the library refused. Ends the sum.
  std::string finish();

 private:
  struct state;
  std::unique_ptr<state> state_;
};

}  // namespace zanvik
