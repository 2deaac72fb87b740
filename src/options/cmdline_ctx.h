// The end of a run: when it goes out of scope it clears the status line and prints the run time.
#pragma once

#include <cstdint>
#include <string>

#include "options/cmd_params.h"

namespace zanvik {

class cmdline_ctx {
 public:
  using exit_callback = int (*)(const std::string& signal_name);

  // Copies what it needs from `options`. The clock is read only if the run time is needed, by
  // `-profile` or an open trace. `callback` may be null; it is called at the end if a signal name
  // was given.
  cmdline_ctx(const cmd_params& options, exit_callback callback);
  cmdline_ctx(const cmdline_ctx&) = delete;
  cmdline_ctx& operator=(const cmdline_ctx&) = delete;
  ~cmdline_ctx();

 private:
  void tell_run_time() const;

  bool show_status_;
  bool profile_;
  std::uint64_t start_filetime_ = 0;  // 0: the run time is not printed
  std::string profile_path_;          // the trace file, which gets the run time too
  std::string signal_name_;
  exit_callback callback_ = nullptr;
};

}  // namespace zanvik
