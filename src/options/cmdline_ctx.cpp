#include "options/cmdline_ctx.h"

#include <charconv>
#include <cstdio>
#include <fstream>

#include "base/console.h"
#include "base/time_value.h"

namespace zanvik {

cmdline_ctx::cmdline_ctx(const cmd_params& options, exit_callback callback)
    : show_status_(options.show_status), profile_(options.profile) {
  if (options.trace.diags_on && options.trace.diag_stream->good()) {
    profile_path_ = options.trace.diag_path;
  }
  if (profile_ || !profile_path_.empty()) start_filetime_ = qx::time::now().filetime();
  if (callback != nullptr && !options.signal_name.empty()) {
    signal_name_ = options.signal_name;
    callback_ = callback;
  }
}

cmdline_ctx::~cmdline_ctx() {
  if (show_status_) clear_status();
  if (start_filetime_ != 0) tell_run_time();
  if (callback_ != nullptr) callback_(signal_name_);
}

void cmdline_ctx::tell_run_time() const {
  // Signed: the clock may have been set back during the run.
  const auto ticks = static_cast<std::int64_t>(qx::time::now().filetime() - start_filetime_);
  const double seconds = static_cast<double>(ticks) / static_cast<double>(qx::ticks_per_second);
  char digits[32];
  const auto end =
      std::to_chars(digits, digits + sizeof(digits), seconds, std::chars_format::general, 6);
  const std::string text = "->" + std::string(digits, end.ptr) + " secs";
  if (profile_) std::fprintf(stderr, "%s\n", text.c_str());
  if (!profile_path_.empty()) std::ofstream(profile_path_, std::ios::app) << text;
}

}  // namespace zanvik
