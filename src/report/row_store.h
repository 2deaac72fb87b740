// The rows of the report's tables, in bounded memory.
//
// Rows come in any order. If there are more than the page holds, the largest tables give up their
// oldest rows: every table keeps its newest rows up to one level that is the same for all, and a
// table below that level keeps all it has. Thus a table with a million rows never pushes out one
// with ten. All rows are counted. What is kept depends on the rows alone, not on their order,
// unless texts fill the page before the rows do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "report/text_pool.h"

namespace zanvik {

// Where a row comes from.
struct row_place {
  std::uint64_t time = 0;      // FILETIME
  std::uint64_t sequence = 0;  // rises with each event that is read; decides between equal times
  std::uint64_t record = 0;
  std::uint32_t log = 0;
};

struct stored_table {
  std::size_t columns = 0;
  std::uint64_t total = 0;           // all rows there were
  std::vector<row_place> places;     // of the rows that are kept
  std::vector<std::uint32_t> cells;  // texts by number, row by row
  row_place oldest{};                // nothing before it is wanted any more

  std::size_t rows() const { return places.size(); }
  std::uint32_t cell(std::size_t row, std::size_t column) const {
    return cells[row * columns + column];
  }
};

class row_store {
 public:
  row_store(std::size_t most_rows, std::size_t most_text_bytes)
      : most_rows_(most_rows), most_text_bytes_(most_text_bytes) {}

  std::size_t add_table(std::size_t columns);
  // The texts are used as they are; page_text.h makes them fit to be shown.
  void add(std::size_t table, const row_place& place, std::span<const std::string_view> cells);
  // Cuts the tables to what the page holds, and sorts their rows by time.
  void finish();

  const std::vector<stored_table>& tables() const { return tables_; }
  const text_pool& texts() const { return texts_; }

 private:
  void cut();
  std::size_t common_level() const;
  void drop_texts();

  std::size_t most_rows_, most_text_bytes_;
  std::size_t rows_ = 0;  // in all tables
  std::size_t level_ = SIZE_MAX;
  std::vector<stored_table> tables_;
  text_pool texts_;
};

}  // namespace zanvik
