// The date and the time of a record as its table shows them: in the formats of the run, or blanks
// for a count that is not a time. Make one for a whole run of tables; it remembers the last day.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/time_writer.h"
#include "options/output_format.h"

namespace zanvik {

class time_cells {
 public:
  explicit time_cells(const output_format& format)
      : formatter_(format.descriptor), blank_(format.no_whitespace ? "" : " ") {}

  // Sets date() and time(), which are valid until the next call.
  void read(std::uint64_t filetime) {
    // The result is also false for a descriptor without separator, although the texts are there.
    (void)formatter_.format(filetime);
    date_ = formatter_.date();
    time_ = formatter_.time();
    if (date_.empty() && time_.empty()) date_ = time_ = blank_;
  }
  std::string_view date() const { return date_; }
  std::string_view time() const { return time_; }

 private:
  cell_time_formatter formatter_;
  std::string_view blank_;
  std::string_view date_;
  std::string_view time_;
};

}  // namespace zanvik
