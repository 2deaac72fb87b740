#include "events/fragment_structures.h"

#include "base/limits.h"

namespace zanvik {
namespace {

// Keeps the IDs of these templates apart from those of all others.
constexpr std::uint64_t first_id = std::uint64_t{1} << 63;

template <typename T>
void append_bytes(std::string& out, const T& value) {
  out.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

// Everything that a fragment's template says.
void make_key(const event_template& body, std::string& key) {
  key.clear();
  key += body.cut ? '1' : '0';
  for (const template_token& token : body.tokens) {
    key += static_cast<char>(token.kind);
    append_bytes(key, token.text_bytes);
    if (token.kind != template_token_kind::slot) continue;
    key += token.optional ? '1' : '0';
    append_bytes(key, token.slot);
  }
  key += body.pool;
}

}  // namespace

const event_template* fragment_structures::find(const event_template& body) {
  make_key(body, key_);
  const auto found = known_.find(key_);
  if (found != known_.end()) return found->second.get();
  if (known_.size() >= limits::cached_fragments ||
      key_.size() > limits::cached_fragment_bytes - held_bytes_) {
    return nullptr;
  }
  held_bytes_ += key_.size();
  auto& kept = known_[key_];
  kept = std::make_unique<event_template>(body);
  kept->id = first_id | ++last_id_;
  return kept.get();
}

void fragment_structures::clear() {
  known_.clear();
  held_bytes_ = 0;
}

}  // namespace zanvik
