#include "report/row_store.h"

#include <algorithm>
#include <numeric>

namespace zanvik {
namespace {

bool older(const row_place& a, const row_place& b) {
  return a.time != b.time ? a.time < b.time : a.sequence < b.sequence;
}

// Keeps the rows with these numbers, in this order.
void take(stored_table& table, const std::vector<std::size_t>& rows) {
  std::vector<row_place> places;
  std::vector<std::uint32_t> cells;
  places.reserve(rows.size());
  cells.reserve(rows.size() * table.columns);
  for (const std::size_t row : rows) {
    places.push_back(table.places[row]);
    const auto first = table.cells.begin() + static_cast<std::ptrdiff_t>(row * table.columns);
    cells.insert(cells.end(), first, first + static_cast<std::ptrdiff_t>(table.columns));
  }
  table.places = std::move(places);
  table.cells = std::move(cells);
}

void keep_newest(stored_table& table, std::size_t count) {
  if (table.rows() <= count) return;
  std::vector<std::size_t> rows(table.rows());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  const auto last = rows.begin() + static_cast<std::ptrdiff_t>(count);
  std::nth_element(rows.begin(), last - 1, rows.end(), [&](std::size_t a, std::size_t b) {
    return older(table.places[b], table.places[a]);
  });
  table.oldest = table.places[*(last - 1)];
  rows.resize(count);
  take(table, rows);
}

}  // namespace

std::size_t row_store::add_table(std::size_t columns) {
  tables_.emplace_back().columns = columns;
  return tables_.size() - 1;
}

void row_store::add(std::size_t table, const row_place& place,
                    std::span<const std::string_view> cells) {
  stored_table& to = tables_[table];
  ++to.total;
  if (older(place, to.oldest)) return;
  to.places.push_back(place);
  for (const std::string_view cell : cells) to.cells.push_back(texts_.add(cell));
  ++rows_;
  if (rows_ >= 2 * most_rows_ || texts_.written_bytes() >= 2 * most_text_bytes_) cut();
}

// The largest level at which all tables together have no more rows than the page.
std::size_t row_store::common_level() const {
  std::vector<std::uint64_t> totals;
  for (const stored_table& table : tables_) totals.push_back(table.total);
  std::sort(totals.begin(), totals.end());
  std::uint64_t left = most_rows_;
  for (std::size_t i = 0; i < totals.size(); ++i) {
    const std::uint64_t share = left / (totals.size() - i);
    if (totals[i] > share) return static_cast<std::size_t>(std::max<std::uint64_t>(share, 1));
    left -= totals[i];
  }
  return SIZE_MAX;
}

void row_store::cut() {
  level_ = std::min(level_, common_level());
  for (;;) {
    rows_ = 0;
    std::size_t longest = 0;
    for (stored_table& table : tables_) {
      keep_newest(table, level_);
      rows_ += table.rows();
      longest = std::max(longest, table.rows());
    }
    drop_texts();
    if (texts_.written_bytes() <= most_text_bytes_ || longest <= 1) return;
    level_ = longest - (longest + 3) / 4;
  }
}

void row_store::drop_texts() {
  std::vector<bool> used(texts_.size(), false);
  for (const stored_table& table : tables_) {
    for (const std::uint32_t cell : table.cells) used[cell] = true;
  }
  const std::vector<std::uint32_t> numbers = texts_.keep(used);
  for (stored_table& table : tables_) {
    for (std::uint32_t& cell : table.cells) cell = numbers[cell];
  }
}

void row_store::finish() {
  cut();
  for (stored_table& table : tables_) {
    std::vector<std::size_t> rows(table.rows());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    std::sort(rows.begin(), rows.end(), [&](std::size_t a, std::size_t b) {
      return older(table.places[a], table.places[b]);
    });
    take(table, rows);
  }
}

}  // namespace zanvik
