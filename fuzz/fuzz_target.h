// What a fuzz target is, and what targets share.
//
// A target is a function of one input, which a source <parser>_fuzz.cpp defines with
// ZANVIK_FUZZ_TARGET under the name of its parser. All targets are linked into one program: with
// the fuzzing engine (engine.cpp), and without it for the kept inputs (replay.cpp). A target
// accepts any bytes and leaves no state behind. It fails by `require`, by a sanitizer, or by taking
// too long.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace zanvik::fuzz {

struct target {
  std::string_view name;
  void (*run)(std::span<const std::byte> input);
};

// All targets of the program, in no order.
std::vector<target>& targets();
// Null if there is none of that name.
const target* find_target(std::string_view name);

struct registration {
  registration(std::string_view name, void (*run)(std::span<const std::byte>)) {
    targets().push_back({name, run});
  }
};

#define ZANVIK_FUZZ_TARGET(parser)                                       \
  static void fuzz_##parser(std::span<const std::byte> bytes);           \
  static const registration registered_##parser{#parser, fuzz_##parser}; \
  static void fuzz_##parser(std::span<const std::byte> bytes)

// Ends the process, with a line that says which condition was false.
void require(bool holds, std::string_view what);
// The same for two texts that must be equal; both are shown.
void require_equal(std::string_view one, std::string_view other, std::string_view what);

// Bytes in memory of exactly their size, so that every read past their end is noticed.
class exact_bytes {
 public:
  // A copy, padded with zeros to `size` if that is more.
  explicit exact_bytes(std::span<const std::byte> bytes, std::size_t size = 0)
      : size_(bytes.size() < size ? size : bytes.size()), bytes_(new std::byte[size_]()) {
    if (!bytes.empty()) std::memcpy(bytes_.get(), bytes.data(), bytes.size());
  }
  std::span<std::byte> span() { return {bytes_.get(), size_}; }
  std::span<const std::byte> span() const { return {bytes_.get(), size_}; }

 private:
  std::size_t size_;
  std::unique_ptr<std::byte[]> bytes_;
};

// Splits an input: small choices at its front, then the bytes to be read. Missing bytes read as 0.
class input {
 public:
  explicit input(std::span<const std::byte> bytes) : rest_(bytes) {}

  template <typename T>
  T take() {
    T value = 0;
    const auto taken = take_bytes(sizeof(T));
    if (!taken.empty()) std::memcpy(&value, taken.data(), taken.size());
    return value;
  }
  // At most `count` bytes.
  std::span<const std::byte> take_bytes(std::size_t count) {
    const auto taken = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  // The text up to the next line end, or to the input's end.
  std::string_view take_line();
  std::span<const std::byte> rest() const { return rest_; }

 private:
  std::span<const std::byte> rest_;
};

inline std::string_view text_of(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A log from a short input: for each chunk a 16-bit count and as many bytes, padded with zeros to
// the length of a chunk; at most `most_chunks` of them. Seeds are packed by `packed_log`.
//   flags  other properties of the log, see the constants
std::vector<std::byte> unpacked_log(std::span<const std::byte> packed, std::uint8_t flags);
inline constexpr std::uint8_t log_without_header = 2;  // chunks alone, as a later block has them
inline constexpr std::uint8_t log_cut_short = 4;       // the last chunk is not filled
inline constexpr std::size_t most_chunks = 3;

// The inverse, for a log with a file header: chunks without the zeros at their end.
std::vector<std::byte> packed_log(std::span<const std::byte> log);

}  // namespace zanvik::fuzz
