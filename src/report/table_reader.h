// Reads the rows of one table by the names of its columns.
#pragma once

#include <cstdint>
#include <string_view>

#include "report/collector.h"

namespace zanvik {

class table_reader {
 public:
  // A table without rows if there is none of that name.
  table_reader(const report_collector& collected, std::string_view name)
      : texts_(collected.rows().texts()) {
    for (std::size_t i = 0; i < collected.tables().size(); ++i) {
      if (collected.tables()[i].name != name) continue;
      table_ = &collected.tables()[i];
      stored_ = &collected.rows().tables()[i];
    }
  }

  std::size_t rows() const { return stored_ == nullptr ? 0 : stored_->rows(); }
  std::uint64_t time(std::size_t row) const { return stored_->places[row].time; }
  // The number of a column, for `text`; its name has to be one of the table's.
  std::size_t column(std::string_view name) const {
    std::size_t number = 0;
    while (table_ != nullptr && table_->columns[number].name != name) ++number;
    return number;
  }
  std::string_view text(std::size_t row, std::size_t column) const {
    return texts_.text(stored_->cell(row, column));
  }

 private:
  const text_pool& texts_;
  const report_table* table_ = nullptr;
  const stored_table* stored_ = nullptr;
};

}  // namespace zanvik
