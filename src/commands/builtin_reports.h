// The seven built-in reports: which logs each one is for, and its lines for such a log.
//
// A report has two tests. The first looks at a log in the list of logs, the second at the current
// log when the report's lines are needed; a log has to pass both.
#pragma once

#include <span>
#include <string_view>

#include "commands/command_build.h"

namespace zanvik {

enum class builtin_report { pw, time, logon, startstop, creds, partition_metadata, usb };

// The first test, by channel and kind of the log.
bool report_concerns_log(builtin_report report, std::string_view channel, bool is_evtx);

// The second test, and the lines for the log's kind: empty if the report has nothing for this log.
std::span<const std::string_view> report_lines(builtin_report report, const log_source& log);

}  // namespace zanvik
