// The parts of the table that questions.cpp puts together; each is in the file that its comment
// names.
#pragma once

#include "questions/questions.h"

namespace zanvik::answers {

// Providers that several questions ask. Legacy logs have the events of the security log from
// "Security".
inline constexpr std::string_view security = "Microsoft-Windows-Security-Auditing";
inline constexpr std::string_view legacy_security = "Security";
inline constexpr std::string_view event_log = "Microsoft-Windows-Eventlog";

// logons.cpp
extern const question_parts logons, failed_logons, explicit_logons, remote_desktop;
// programs.cpp
extern const question_parts services, start_types, tasks, processes, script_blocks;
// accounts.cpp
extern const question_parts accounts, groups;
// system.cpp
extern const question_parts cleared, clock_changes, starts_and_stops;
// devices.cpp
extern const question_parts usb, defender;

}  // namespace zanvik::answers
