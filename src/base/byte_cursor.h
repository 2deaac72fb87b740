// The one way to read bytes of an untrusted file.
//
// A cursor is a span, a position in it and the absolute base of its first byte. It has the only
// bounds check of the readers, in subtracting form. It reads little-endian integers by memcpy and
// never casts a structure onto bytes. A read past the end yields zero (or an empty span), moves the
// position to the end and marks the cursor as failed; the `_at` reads leave the position alone. The
// span must outlive the cursor and everything read from it.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace zanvik {

static_assert(std::endian::native == std::endian::little,
              "integers are read by memcpy from little-endian files");

class byte_cursor {
 public:
  byte_cursor() = default;
  explicit byte_cursor(std::span<const std::byte> bytes, std::uint64_t absolute_base = 0)
      : bytes_(bytes), base_(absolute_base) {}

  std::size_t size() const { return bytes_.size(); }
  std::size_t position() const { return pos_; }
  std::size_t remaining() const { return bytes_.size() - pos_; }
  // Offset of the position in the file, in bytes.
  std::uint64_t absolute() const { return base_ + pos_; }
  // True after a read or a seek past the end.
  bool failed() const { return failed_; }
  std::span<const std::byte> bytes() const { return bytes_; }

  // True if there are `n` bytes at `offset`; `offset + n` is never computed, so it cannot wrap.
  bool has(std::uint64_t offset, std::uint64_t n) const {
    return offset <= bytes_.size() && n <= bytes_.size() - offset;
  }

  void seek(std::uint64_t offset) {
    failed_ = failed_ || offset > bytes_.size();
    pos_ = offset > bytes_.size() ? bytes_.size() : static_cast<std::size_t>(offset);
  }

  std::span<const std::byte> take(std::size_t n) {
    if (n > bytes_.size() - pos_) {  // `pos_ + n` could wrap; this cannot
      pos_ = bytes_.size();
      failed_ = true;
      return {};
    }
    const auto taken = bytes_.subspan(pos_, n);
    pos_ += n;
    return taken;
  }

  template <std::unsigned_integral T>
  T read() {
    T value = 0;
    const auto taken = take(sizeof(T));
    if (taken.size() == sizeof(T)) std::memcpy(&value, taken.data(), sizeof(T));
    return value;
  }
  std::uint8_t read_u8() { return read<std::uint8_t>(); }
  std::uint16_t read_u16() { return read<std::uint16_t>(); }
  std::uint32_t read_u32() { return read<std::uint32_t>(); }
  std::uint64_t read_u64() { return read<std::uint64_t>(); }

  // The bytes [offset, offset + n), or an empty span if some of them do not exist.
  std::span<const std::byte> bytes_at(std::uint64_t offset, std::uint64_t n) const {
    if (!has(offset, n)) return {};
    return bytes_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(n));
  }

  // The integer at `offset`, or nothing if some of its bytes do not exist.
  template <std::unsigned_integral T>
  std::optional<T> at(std::uint64_t offset) const {
    if (!has(offset, sizeof(T))) return std::nullopt;
    T value;
    std::memcpy(&value, bytes_.data() + offset, sizeof(T));
    return value;
  }
  // The same; bytes that do not exist read as zero.
  template <std::unsigned_integral T>
  T at_or_zero(std::uint64_t offset) const {
    return at<T>(offset).value_or(T{0});
  }

 private:
  std::span<const std::byte> bytes_;
  std::size_t pos_ = 0;
  std::uint64_t base_ = 0;
  bool failed_ = false;
};

}  // namespace zanvik
