#include "report/text_pool.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "report/page_text.h"

namespace zanvik {

std::string_view text_pool::store(std::string_view text) {
  if (text.size() > room_) {
    room_ = std::max(text.size(), block_bytes);
    blocks_.push_back(std::make_unique<char[]>(room_));
    at_ = blocks_.back().get();
  }
  std::memcpy(at_, text.data(), text.size());
  const std::string_view stored(at_, text.size());
  at_ += text.size();
  room_ -= text.size();
  return stored;
}

std::uint32_t text_pool::add(std::string_view text) {
  if (text.empty()) return 0;
  const auto known = numbers_.find(text);
  if (known != numbers_.end()) return known->second;
  const auto number = static_cast<std::uint32_t>(texts_.size());
  texts_.push_back(store(text));
  numbers_.emplace(texts_.back(), number);
  written_bytes_ += json_bytes(text) + 1;
  return number;
}

std::vector<std::uint32_t> text_pool::keep(const std::vector<bool>& used) {
  text_pool kept;
  std::vector<std::uint32_t> numbers(texts_.size(), 0);
  for (std::size_t i = 1; i < texts_.size(); ++i) {
    if (used[i]) numbers[i] = kept.add(texts_[i]);
  }
  *this = std::move(kept);
  return numbers;
}

}  // namespace zanvik
