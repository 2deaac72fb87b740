// Checksums of files, by OpenSSL. This is the only file that knows that library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "source/crc32.h"

namespace zanvik {

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
