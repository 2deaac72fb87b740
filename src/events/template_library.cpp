#include "events/template_library.h"

#include <algorithm>
#include <cstring>

#include "base/hash_mix.h"
#include "base/limits.h"

namespace zanvik {
namespace {

// Apart from the ids that readers give.
constexpr std::uint64_t first_library_id = std::uint64_t{1} << 62;

std::uint64_t key_of(std::uint32_t template_id) { return keyed_hash(template_id, 0); }

std::uint32_t id_of(const guid_bytes& guid) {
  std::uint32_t id;
  std::memcpy(&id, guid.data(), sizeof id);
  return id;
}

bool is_same(const event_template& a, const event_template& b) {
  return a.pool == b.pool && a.tokens == b.tokens;
}

std::uint32_t slots_of(const event_template& body) {
  std::uint32_t slots = 0;
  for (const template_token& token : body.tokens) {
    if (token.kind == template_token_kind::slot) slots = std::max(slots, token.slot + 1u);
  }
  return slots;
}

}  // namespace

void template_library::add(const guid_bytes& guid, const event_template& body) {
  if (body.cut || held_bytes_ > limits::carved_template_bytes) return;
  std::vector<entry>& known = by_id_[key_of(id_of(guid))];
  for (const entry& each : known) {
    if (each.guid == guid && is_same(*each.body, body)) return;
  }
  if (known.size() == limits::templates_of_an_id) return;
  known.push_back({guid, slots_of(body), std::make_unique<event_template>(body)});
  known.back().body->id = first_library_id + 2 * ++last_id_;
  known.back().body->once = false;
  held_bytes_ += sizeof(entry) + sizeof(event_template) + body.pool.size() +
                 body.tokens.size() * sizeof(template_token);
}

const event_template* template_library::find(std::uint32_t template_id,
                                             const std::optional<guid_bytes>& guid,
                                             std::uint32_t slots) const {
  const auto known = by_id_.find(key_of(template_id));
  if (known == by_id_.end()) return nullptr;
  const event_template* exact = nullptr;
  const event_template* fewer = nullptr;
  unsigned exact_count = 0, fewer_count = 0;
  for (const entry& each : known->second) {
    if (id_of(each.guid) != template_id || (guid && each.guid != *guid)) continue;
    if (each.slots == slots) {
      exact = each.body.get();
      ++exact_count;
    } else if (each.slots < slots) {
      fewer = each.body.get();
      ++fewer_count;
    }
  }
  if (exact_count != 0) return exact_count == 1 ? exact : nullptr;
  return fewer_count == 1 ? fewer : nullptr;
}

}  // namespace zanvik
