#include "commands/builtin_reports.h"

#include "base/text.h"
#include "commands/builtin_lines.h"

namespace zanvik {
namespace {

namespace lines = builtin_lines;

bool holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// The second test of the reports about one channel: its name in the path is enough.
bool is_of_channel(const log_source& log, std::string_view channel, std::string_view evtx_name,
                   std::string_view evt_name) {
  const std::string path = to_lower(log.path);
  return holds(path, evtx_name) || holds(path, evt_name) || log.channel == channel;
}

bool is_security_log(const log_source& log) {
  return is_of_channel(log, "security", "security.evtx", "secevent.evt");
}

bool is_system_log(const log_source& log) {
  return is_of_channel(log, "system", "system.evtx", "sysevent.evt");
}

// Clock changes are in the security log. System logs pass the first test, but there are no lines
// for them: meant.
bool has_clock_changes(const log_source& log) {
  const std::string path = to_lower(log.path);
  return holds(path, "security") || holds(path, "secevent") || log.channel == "security";
}

lines::table usb_lines(const log_source& log) {
  if (log.kind != log_kind::evtx) return {};
  const std::string channel = to_lower(log.channel);
  if (holds(channel, "system")) return lines::usb_system;
  if (holds(channel, "driverframeworks")) return lines::usb_driverframeworks;
  if (holds(channel, "windows-partition")) return {};  // accepted, but there is nothing to look for
  if (holds(channel, "windows-kernel-pnp")) return lines::usb_kernel_pnp;
  return {};
}

lines::table partition_lines(const log_source& log) {
  return holds(to_lower(log.channel), "windows-partition") ? lines::partition_evtx : lines::table();
}

lines::table by_kind(bool concerned, const log_source& log, lines::table evtx, lines::table evt) {
  if (!concerned) return {};
  return log.kind == log_kind::evtx ? evtx : evt;
}

}  // namespace

bool report_concerns_log(builtin_report report, std::string_view channel, bool is_evtx) {
  switch (report) {
    case builtin_report::pw:
    case builtin_report::logon:
    case builtin_report::creds:
      return channel == "security";
    case builtin_report::time:
      return channel == "security" || channel == "system";
    case builtin_report::startstop:
      return channel == "system";
    case builtin_report::partition_metadata:
      return is_evtx && holds(channel, "windows-partition");
    case builtin_report::usb:
      return is_evtx &&
             (channel == "system" || holds(channel, "driverframeworks") ||
              holds(channel, "windows-partition") || holds(channel, "windows-kernel-pnp"));
  }
  return false;
}

std::span<const std::string_view> report_lines(builtin_report report, const log_source& log) {
  switch (report) {
    case builtin_report::pw:
      return by_kind(is_security_log(log), log, lines::pw_evtx, lines::pw_evt);
    case builtin_report::time:
      return by_kind(has_clock_changes(log), log, lines::time_evtx, lines::time_evt);
    case builtin_report::logon:
      return by_kind(is_security_log(log), log, lines::logon_evtx, lines::logon_evt);
    case builtin_report::startstop:
      return by_kind(is_system_log(log), log, lines::startstop_evtx, lines::startstop_evt);
    case builtin_report::creds:
      return by_kind(is_security_log(log), log, lines::creds_evtx, lines::creds_evt);
    case builtin_report::partition_metadata:
      return partition_lines(log);
    case builtin_report::usb:
      return usb_lines(log);
  }
  return {};
}

}  // namespace zanvik
