// What the classic door shows of a walk while it runs: a status line on a terminal, and a line a
// record in the diagnostics of level 2 and above.
#pragma once

#include <cstdint>
#include <string>

#include "evtx/evtx.h"
#include "options/cmd_params.h"

namespace zanvik {

// The progress of one log; the options must outlive it.
class log_progress : public walk_progress {
 public:
  log_progress(const cmd_params& options, const std::string& log_path);
  void at_record(std::uint64_t number, std::uint64_t number_before) override;

  // Several threads: a block has been read, the last record of which has this number.
  void at_block(std::uint64_t last_number) const;

  // Null when nothing is to be shown.
  walk_progress* if_wanted() { return traces_ || options_.show_status ? this : nullptr; }

 private:
  const cmd_params& options_;
  std::string log_path_;
  std::string short_name_;  // for the status line
  bool traces_;
  std::uint64_t records_ = 0;
};

}  // namespace zanvik
