#include "verbs/line_sorter.h"

#include <cstring>
#include <optional>

namespace zanvik {

line_sorter::line_sorter(sort_settings settings, bool unique) {
  // While one passes on its lines the other collects them.
  if (unique) settings.memory_bytes /= 2;
  by_time_ = std::make_unique<external_sorter>(settings);
  if (unique) by_identity_ = std::make_unique<external_sorter>(settings);
}

void line_sorter::add(const sort_key& place, const sort_key& identity, std::string_view line) {
  if (!error_.empty()) return;
  if (!by_identity_) {
    if (!by_time_->add(place, line)) fail(*by_time_);
    return;
  }
  // The other key comes before the line. Lines with one place leave as they came: their identities
  // have another order in each run.
  sort_key numbered = place;
  numbered.parts.back() = ++lines_;
  packed_.assign(reinterpret_cast<const char*>(&numbered), sizeof(numbered));
  packed_ += line;
  if (!by_identity_->add(identity, packed_)) fail(*by_identity_);
}

// Equal lines are next to each other, in the order in which they were added.
bool line_sorter::hand_on_first_ones(const copies_note& note) {
  std::optional<sort_key> identity;
  sort_key place;
  std::string first;
  std::uint64_t copies = 0;
  const auto hand_on = [&] {
    if (copies == 0) return true;
    note(first, copies);
    return by_time_->add(place, first) || fail(*by_time_);
  };
  const bool done = by_identity_->finish([&](const sort_key& id, std::string_view bytes) {
    if (identity == id) {
      ++copies;
      return true;
    }
    if (!hand_on()) return false;
    identity = id;
    std::memcpy(&place, bytes.data(), sizeof(place));
    first = bytes.substr(sizeof(place));
    copies = 1;
    return true;
  });
  return done ? hand_on() : fail(*by_identity_);
}

bool line_sorter::finish(const copies_note& note, const line_use& use) {
  if (!error_.empty()) return false;
  if (by_identity_ && !hand_on_first_ones(note)) return false;
  bool wanted = true;
  const bool done =
      by_time_->finish([&](const sort_key&, std::string_view line) { return wanted = use(line); });
  if (!done && wanted) fail(*by_time_);
  return done;
}

// The error is the sorter's; always false.
bool line_sorter::fail(const external_sorter& sorter) {
  if (error_.empty()) error_ = sorter.error();
  return false;
}

}  // namespace zanvik
