#include "inspect/log_ledger.h"

#include <algorithm>

#include "base/limits.h"

namespace zanvik {

void number_ranges::add(std::uint64_t number) {
  if (!ranges_.empty() && number == ranges_.back().second + 1 && number != 0) {
    ranges_.back().second = number;
    return;
  }
  if (cut_) return;
  if (ranges_.size() >= limits::number_ranges_of_a_line) joined();
  if (ranges_.size() >= limits::number_ranges_of_a_line) {
    cut_ = true;
    return;
  }
  ranges_.emplace_back(number, number);
}

const std::vector<std::pair<std::uint64_t, std::uint64_t>>& number_ranges::joined() {
  std::sort(ranges_.begin(), ranges_.end());
  std::size_t kept = 0;
  for (const auto& range : ranges_) {
    if (kept != 0 && range.first <= ranges_[kept - 1].second + 1 && ranges_[kept - 1].second + 1) {
      ranges_[kept - 1].second = std::max(ranges_[kept - 1].second, range.second);
    } else {
      ranges_[kept++] = range;
    }
  }
  ranges_.resize(kept);
  return ranges_;
}

void log_account::add(const area& part) {
  account_line& to = line(part.kind);
  to.bytes += part.size;
  if (!holds_records(part.kind)) return;
  ++to.records;
  to.numbers.add(part.number);
}

std::uint64_t log_account::bytes() const {
  std::uint64_t sum = 0;
  for (const account_line& one : lines_) sum += one.bytes;
  return sum;
}

std::uint64_t log_account::found() const {
  std::uint64_t sum = given();
  for (std::size_t kind = 0; kind < area_kinds; ++kind) {
    if (is_lost(static_cast<area_kind>(kind))) sum += lines_[kind].records;
  }
  return sum;
}

std::uint64_t log_account::given() const {
  return line(area_kind::record_read).records + line(area_kind::record_outside).records +
         line(area_kind::record_bare).records + line(area_kind::record_part).records +
         line(area_kind::carved_record).records + line(area_kind::carved_legacy).records;
}

std::uint64_t log_account::free_records() const {
  return line(area_kind::free_record).records + line(area_kind::free_record_part).records;
}

}  // namespace zanvik
