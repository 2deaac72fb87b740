#include "evtx/templates/template_bodies.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/hash_mix.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {

std::uint32_t template_bodies::identify(const chunk_view& chunk, std::uint64_t definition,
                                        std::uint32_t size_record, const guid_bytes& guid) {
  const std::uint64_t body = definition + evtx_layout::definition_head_bytes;
  bytes_read_ = 0;
  if (size_record > evtx_layout::chunk_bytes || body > evtx_layout::chunk_bytes - size_record) {
    return 0;
  }
  bytes_read_ = size_record;
  copy_list& known = copies_[keyed_hash(guid_hash(guid), size_record)];
  for (const body_copy& copy : known.copies) {
    if (copy.number != 0 && copy.bytes.size() == size_record && is_copy(copy, chunk, body)) {
      return copy.number;
    }
  }
  if (!scan_.scan(chunk, body, size_record)) {
    bytes_read_ = scan_.bytes_read();
    return 0;
  }
  const std::uint32_t number = number_of_normal_form();
  keep_copy(known, scan_.take_copy(chunk, body, size_record), number);
  return number;
}

// A body beyond the limits gets a new number each time, and is not kept.
std::uint32_t template_bodies::number_of_normal_form() {
  const auto bytes = scan_.normal_form();
  const std::uint64_t hash = keyed_hash(bytes);
  const auto known = normal_forms_.find(hash);
  if (known != normal_forms_.end() &&
      std::equal(bytes.begin(), bytes.end(), known->second.bytes.begin(),
                 known->second.bytes.end())) {
    return known->second.number;
  }
  const std::uint32_t number = ++last_number_;
  if (known == normal_forms_.end() && held_bytes_ <= limits::cached_layout_bytes) {
    normal_forms_.emplace(hash, normal_form{{bytes.begin(), bytes.end()}, number});
    held_bytes_ += bytes.size();
  }
  return number;
}

void template_bodies::keep_copy(copy_list& list, body_copy copy, std::uint32_t number) {
  if (held_bytes_ > limits::cached_layout_bytes) return;
  body_copy& place = list.copies[list.next];
  list.next = (list.next + 1) % copies_compared;
  held_bytes_ += copy.held_bytes();
  held_bytes_ -= std::min(held_bytes_, place.held_bytes());
  place = std::move(copy);
  place.number = number;
}

bool template_bodies::drop_if_full() {
  if (copies_.size() <= limits::cached_layouts && normal_forms_.size() <= limits::cached_layouts &&
      held_bytes_ <= limits::cached_layout_bytes) {
    return false;
  }
  copies_.clear();
  normal_forms_.clear();
  held_bytes_ = 0;
  return true;
}

}  // namespace zanvik
