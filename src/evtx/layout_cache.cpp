#include "evtx/layout_cache.h"

#include <functional>
#include <string_view>
#include <utility>

namespace zanvik {
namespace {

class text_hash {
 public:
  void mix(std::string_view text) {
    value_ = value_ * 0x9e3779b97f4a7c15u + std::hash<std::string_view>{}(text);
    bytes_ += text.size();
  }
  std::size_t value() const { return value_; }
  std::size_t bytes() const { return bytes_; }

 private:
  std::size_t value_ = 0;
  std::size_t bytes_ = 0;
};

text_hash hash_of(const record_layout& layout) {
  text_hash hash;
  for (const std::string& name : layout.names) hash.mix(name);
  for (const layout_field& field : layout.fields) {
    hash.mix(field.name);
    hash.mix(field.text);
  }
  return hash;
}

}  // namespace

const record_layout* layout_cache::intern(record_layout layout) {
  const text_hash hash = hash_of(layout);
  const auto [first, last] = by_hash_.equal_range(hash.value());
  for (auto it = first; it != last; ++it) {
    const record_layout& known = *it->second;
    if (known.names == layout.names && known.child_numbers == layout.child_numbers &&
        known.fields == layout.fields) {
      return it->second.get();
    }
  }
  layout.id = ++last_id_;
  text_bytes_ += hash.bytes();
  return by_hash_.emplace(hash.value(), std::make_unique<record_layout>(std::move(layout)))
      ->second.get();
}

bool layout_cache::drop_if_full() {
  if (by_hash_.size() <= limits::cached_layouts && text_bytes_ <= limits::cached_layout_bytes) {
    return false;
  }
  by_hash_.clear();
  text_bytes_ = 0;
  return true;
}

}  // namespace zanvik
