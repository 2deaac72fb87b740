// Three weeks of one workstation with a break-in, as several logs: what a report is for.
//
// In: nothing. Out: finished logs with their file names, the same bytes at each call. Weekdays have
// starts, logons, programs and stops. On Saturday, 2024-03-16, somebody guesses a password from
// 198.51.100.77, logs on by remote desktop, makes an account, a service and a task, runs a script
// whose parts are logged out of order, and clears a log. All of it is invented.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "log_builder.h"

namespace zanvik::testing {

std::vector<std::pair<std::string, log_builder>> incident_logs();

// What the break-in leaves behind, for tests.
inline constexpr std::size_t incident_failures = 140;
inline constexpr const char* incident_address = "198.51.100.77";

}  // namespace zanvik::testing
