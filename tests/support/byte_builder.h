// Little-endian writing for the log builders: appending, patching, text and time in file form.
//
// In: plain values, UTF-8 text, dates. Out: bytes at the end of a byte_vector. Nothing here checks
// what it writes: a test that wants nonsense gets nonsense. Only mistakes in the test's own code (a
// bad GUID text, an offset outside the bytes) stop the program, with std::logic_error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::testing {

using byte_vector = std::vector<std::byte>;

// Bytes from small numbers: bytes_of({0x0f, 1, 1, 0}).
byte_vector bytes_of(std::initializer_list<int> values);
// Bytes of a narrow text, without a NUL.
byte_vector bytes_of(std::string_view text);

void append_u8(byte_vector& out, std::uint8_t value);
void append_u16(byte_vector& out, std::uint16_t value);
void append_u32(byte_vector& out, std::uint32_t value);
void append_u64(byte_vector& out, std::uint64_t value);
void append_bytes(byte_vector& out, std::span<const std::byte> bytes);
void append_zeros(byte_vector& out, std::size_t count);
// UTF-16LE of a UTF-8 text, without a NUL; code points past U+FFFF become surrogate pairs.
void append_utf16(byte_vector& out, std::string_view utf8);
// The same followed by a zero unit.
void append_utf16z(byte_vector& out, std::string_view utf8);
// Number of UTF-16 code units that append_utf16 writes.
std::size_t utf16_units(std::string_view utf8);

// Overwrite in place; the bytes must exist.
void set_u8(byte_vector& bytes, std::size_t offset, std::uint8_t value);
void set_u16(byte_vector& bytes, std::size_t offset, std::uint16_t value);
void set_u32(byte_vector& bytes, std::size_t offset, std::uint32_t value);
void set_u64(byte_vector& bytes, std::size_t offset, std::uint64_t value);
std::uint32_t get_u32(const byte_vector& bytes, std::size_t offset);

// CRC-32 as in zlib; `seed` is the value of the bytes before.
std::uint32_t crc32(std::span<const std::byte> bytes, std::uint32_t seed = 0);

// The 16 bytes of "6b29fc40-ca47-1067-b31d-00dd010662da" (braces allowed), first three fields
// little-endian.
byte_vector guid_bytes(std::string_view text);
// The bytes of "S-1-5-21-1-2-3-500".
byte_vector sid_bytes(std::string_view text);

// FILETIME of a UTC date and time, with further 100 ns units.
std::uint64_t filetime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                       int hundred_ns = 0);
// Seconds since 1970 of a UTC date and time.
std::uint32_t unix_seconds(int year, int month, int day, int hour = 0, int minute = 0,
                           int second = 0);

// The bytes of a file under construction: what every builder of a whole file offers to tests that
// damage it.
class file_bytes {
 public:
  const byte_vector& bytes() const { return bytes_; }
  // A span that a reader may write to.
  std::span<std::byte> span() { return bytes_; }
  std::size_t size() const { return bytes_.size(); }

  void poke_u8(std::size_t offset, std::uint8_t value) { set_u8(bytes_, offset, value); }
  void poke_u16(std::size_t offset, std::uint16_t value) { set_u16(bytes_, offset, value); }
  void poke_u32(std::size_t offset, std::uint32_t value) { set_u32(bytes_, offset, value); }
  void poke_u64(std::size_t offset, std::uint64_t value) { set_u64(bytes_, offset, value); }
  void poke_bytes(std::size_t offset, std::span<const std::byte> bytes);
  // Cuts the file, or extends it with zeros.
  void truncate(std::size_t size) { bytes_.resize(size); }
  // Writes the file; throws std::runtime_error if that fails.
  void write(const std::string& path) const;

 protected:
  byte_vector bytes_;
};

}  // namespace zanvik::testing
