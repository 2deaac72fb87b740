// Texts of the tables, each kept once and known by a number. Number 0 is the empty text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"

namespace zanvik {

class text_pool {
 public:
  text_pool() : texts_{std::string_view()} {}

  std::uint32_t add(std::string_view text);
  // Valid until `keep`.
  std::string_view text(std::uint32_t number) const { return texts_[number]; }
  std::size_t size() const { return texts_.size(); }
  // As they are written in the page.
  std::size_t written_bytes() const { return written_bytes_; }

  // Drops texts that are not `used`; returns the new number of each old one.
  std::vector<std::uint32_t> keep(const std::vector<bool>& used);

 private:
  std::string_view store(std::string_view text);

  static constexpr std::size_t block_bytes = 1 << 20;

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t room_ = 0;  // in the last block
  char* at_ = nullptr;
  std::vector<std::string_view> texts_;
  std::unordered_map<std::string_view, std::uint32_t, keyed_text_hash> numbers_;
  std::size_t written_bytes_ = 0;
};

}  // namespace zanvik
