// Rows made by several threads and written in their order.
//
// In: what appends some rows to a buffer, with the number of its thread. Out: the rows on the
// stream, in the order of the calls. Whatever these refer to must live until `finish`. There is no
// other job in the work meanwhile.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <ostream>
#include <vector>

#include "output/row_buffer.h"
#include "pipeline/ordered_work.h"

namespace zanvik {

class row_jobs {
 public:
  using make_rows = std::function<void(row_buffer& out, std::size_t thread)>;

  // So many records are worth a job.
  static constexpr std::size_t records_of_job = 1024;

  row_jobs(ordered_work& work, std::ostream& out) : work_(work), out_(out), finished_(work) {}

  std::size_t threads() const { return work_.threads(); }
  void add(make_rows make);
  // Returns when all rows are written.
  void finish() { work_.finish(); }

 private:
  class job;
  std::unique_ptr<row_buffer> take_buffer();

  ordered_work& work_;
  std::ostream& out_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<row_buffer>> free_;  // used again
  finished_work finished_;
};

}  // namespace zanvik
