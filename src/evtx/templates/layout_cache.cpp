#include "evtx/templates/layout_cache.h"

#include <string_view>
#include <utility>

#include "base/hash_mix.h"

namespace zanvik {
namespace {

struct layout_texts {
  std::size_t hash = 0;
  std::size_t bytes = 0;

  void add(std::string_view text) {
    hash = mix_hash(hash, text);
    bytes += text.size();
  }
};

layout_texts texts_of(const record_layout& layout) {
  layout_texts texts;
  for (const std::string& name : layout.names) texts.add(name);
  for (const layout_field& field : layout.fields) {
    texts.add(field.name);
    texts.add(field.text);
  }
  return texts;
}

}  // namespace

const record_layout* layout_cache::intern(record_layout layout) {
  const layout_texts texts = texts_of(layout);
  const auto [first, last] = by_hash_.equal_range(texts.hash);
  for (auto it = first; it != last; ++it) {
    const record_layout& known = *it->second;
    if (known.names == layout.names && known.child_numbers == layout.child_numbers &&
        known.fields == layout.fields) {
      return it->second.get();
    }
  }
  layout.id = ++last_id_;
  text_bytes_ += texts.bytes;
  return by_hash_.emplace(texts.hash, std::make_unique<record_layout>(std::move(layout)))
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
