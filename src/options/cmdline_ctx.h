// The end of a run: on leaving its scope it clears the status line and tells the run time.
#pragma once

#include <cstdint>
#include <string>

#include "options/cmd_params.h"

namespace zanvik {

class cmdline_ctx {
 public:
  using exit_callback = int (*)(const std::string& signal_name);

  // Copies what it needs from `options`. The clock is read only when the run time is asked for, by
  // `-profile` or by an open trace. `callback` may be null; it is called at the end when a signal
  // name was given.
  cmdline_ctx(const cmd_params& options, exit_callback callback);
  cmdline_ctx(const cmdline_ctx&) = delete;
  cmdline_ctx& operator=(const cmdline_ctx&) = delete;
  ~cmdline_ctx();

 private:
  void tell_run_time() const;

  bool show_status_;
  bool profile_;
  std::uint64_t start_filetime_ = 0;  // 0: the run time is not told
  std::string profile_path_;          // the trace file, which gets the run time too
  std::string signal_name_;
  exit_callback callback_ = nullptr;
};

}  // namespace zanvik
