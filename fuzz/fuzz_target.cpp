#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace zanvik::fuzz {
namespace {

constexpr std::size_t file_header_bytes = 4096;
constexpr std::size_t chunk_bytes = 65536;

}  // namespace

std::vector<target>& targets() {
  static std::vector<target> all;
  return all;
}

const target* find_target(std::string_view name) {
  const auto found = std::find_if(targets().begin(), targets().end(),
                                  [name](const target& t) { return t.name == name; });
  return found == targets().end() ? nullptr : &*found;
}

void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

void require_equal(std::string_view one, std::string_view other, std::string_view what) {
  if (one == other) return;
  std::fprintf(stderr, "one:   %.*s\nother: %.*s\n", static_cast<int>(one.size()), one.data(),
               static_cast<int>(other.size()), other.data());
  require(false, what);
}

std::string_view input::take_line() {
  const std::string_view text = text_of(rest_);
  const std::size_t end = std::min(text.find('\n'), text.size());
  rest_ = rest_.subspan(std::min(end + 1, rest_.size()));
  return text.substr(0, end);
}

std::vector<std::byte> unpacked_log(std::span<const std::byte> packed, std::uint8_t flags) {
  std::vector<std::byte> log;
  if (!(flags & log_without_header)) {
    log.resize(file_header_bytes);
    std::memcpy(log.data(), "ElfFile", 7);
  }
  input in(packed);
  for (std::size_t i = 0; i < most_chunks && !in.rest().empty(); ++i) {
    const auto piece = in.take_bytes(in.take<std::uint16_t>());
    const std::size_t begin = log.size();
    log.insert(log.end(), piece.begin(), piece.end());
    const bool last = i + 1 == most_chunks || in.rest().empty();
    if (!last || !(flags & log_cut_short)) log.resize(begin + chunk_bytes);
  }
  return log;
}

std::vector<std::byte> packed_log(std::span<const std::byte> log) {
  std::vector<std::byte> packed;
  for (std::size_t at = file_header_bytes; at < log.size(); at += chunk_bytes) {
    auto chunk = log.subspan(at, std::min(chunk_bytes, log.size() - at));
    while (!chunk.empty() && chunk.back() == std::byte{0}) chunk = chunk.first(chunk.size() - 1);
    packed.push_back(std::byte(chunk.size() & 0xff));
    packed.push_back(std::byte(chunk.size() >> 8));
    packed.insert(packed.end(), chunk.begin(), chunk.end());
  }
  return packed;
}

}  // namespace zanvik::fuzz
