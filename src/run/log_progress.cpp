#include "run/log_progress.h"

#include "base/console.h"
#include "base/diag.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr std::uint64_t records_between_status = 17;

std::string short_log_name(std::string_view path) {
  constexpr std::size_t longest = 15;
  std::string name(path);
  replace_char(name, '%', ' ', false);
  if (name.size() > longest) name = name.substr(0, longest) + "..";
  return name;
}

}  // namespace

log_progress::log_progress(const cmd_params& options, const std::string& log_path)
    : options_(options),
      log_path_(log_path),
      short_name_(short_log_name(log_path)),
      traces_(options.trace.diags_on && options.trace.diag_level >= 2) {}

void log_progress::at_record(std::uint64_t number, std::uint64_t number_before) {
  if (traces_) {
    diag_line(options_.trace, "%s: %lld", log_path_.c_str(), static_cast<long long>(number));
  }
  if (!options_.show_status || records_++ % records_between_status != 0) return;
  // The record in hand has not been looked at yet.
  print_status(status_width_max, "%s: %lld", short_name_.c_str(),
               static_cast<long long>(number_before));
}

void log_progress::at_block(std::uint64_t last_number) const {
  if (!options_.show_status) return;
  print_status(status_width_max, "%s: %lld", short_name_.c_str(),
               static_cast<long long>(last_number));
}

}  // namespace zanvik
