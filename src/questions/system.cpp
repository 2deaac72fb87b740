// Logs that were cleared, clocks that were set, starts and stops.
#include "questions/answers.h"
#include "questions/codes.h"

namespace zanvik::answers {
namespace {

constexpr question_column cleared_columns[] = {
    {"log_name", "Log"},
    {"account", "By account"},
    {"domain", "By domain"},
    {"backup", "Saved to"},
    {"category", "Audit category", &codes::message_words},
    {"change", "Change", &codes::message_words},
};
constexpr question_source cleared_sources[] = {
    {event_log, 1102, "audit log cleared", {"@Channel", "SubjectUserName", "SubjectDomainName"}},
    {event_log,
     104,
     "log cleared",
     {"Channel", "SubjectUserName", "SubjectDomainName", "BackupPath"}},
    {event_log, 1100, "event log service stopped", {"@Channel"}},
    {event_log, 1104, "audit log full", {"@Channel"}},
    {legacy_security, 517, "audit log cleared", {"@Channel", "#3", "#4"}},
    {security,
     4719,
     "audit policy changed",
     {"", "SubjectUserName", "SubjectDomainName", "", "CategoryId", "AuditPolicyChanges"}},
    {legacy_security, 612, "audit policy changed", {"", "#18", "#19"}},
};

constexpr question_column clock_columns[] = {
    {"old_time", "Time before"},   {"new_time", "Time after"},
    {"offset_seconds", "Seconds"}, {"reason", "Reason", &codes::clock_reasons},
    {"process", "Process"},        {"account", "Account"},
    {"domain", "Domain"},
};
constexpr question_source clock_sources[] = {
    {security,
     4616,
     "clock set",
     {"PreviousTime", "NewTime", "", "", "ProcessName", "SubjectUserName", "SubjectDomainName"}},
    {"Microsoft-Windows-Kernel-General",
     1,
     "clock set",
     {"OldTime", "NewTime", "", "Reason", "ProcessName"}},
    {"Microsoft-Windows-Time-Service",
     52,
     "time service set the clock",
     {"", "", "TimeOffsetSeconds"}},
    {legacy_security, 520, "clock set", {"#8", "#10", "", "", "#1", "#5", "#6"}},
};

constexpr std::string_view power = "Microsoft-Windows-Kernel-Power";

constexpr question_column start_columns[] = {
    {"type", "Type"},
    {"reason", "Reason"},
    {"power_state", "State", &codes::power_states},
    {"process", "Process"},
    {"account", "Account"},
    {"comment", "Comment"},
    {"version", "Windows version"},
    {"stop_code", "Stop code"},
};
constexpr question_source start_sources[] = {
    {"Microsoft-Windows-Kernel-General",
     12,
     "system started",
     {"", "", "", "", "", "", "BuildVersion"}},
    {"Microsoft-Windows-Kernel-General", 13, "system stopped", {}},
    {"EventLog", 6005, "event log started", {}},
    {"EventLog", 6006, "event log stopped", {}},
    // #0 and #1 are time and date of the last sign of life.
    {"EventLog", 6008, "unexpected shutdown before", {"", "", "", "", "", "#1"}},
    {"User32",
     1074,
     "shutdown requested",
     {"param5|#4", "param3|#2", "", "param1|#0", "param7|#6", "param6|#5"}},
    {"User32",
     1076,
     "reason of unexpected shutdown",
     {"", "param1|#0", "", "", "param6|#5", "param5|#4"}},
    {power, 41, "restarted without a shutdown", {"", "", "", "", "", "", "", "BugcheckCode"}},
    {power, 42, "entering sleep", {"", "", "TargetState"}},
    {power, 107, "resumed from sleep", {"", "", "TargetState"}},
    {"Microsoft-Windows-Power-Troubleshooter",
     1,
     "resumed from sleep",
     {"", "WakeSourceText", "TargetState"}},
    {security, 4608, "security subsystem started", {}},
    {legacy_security, 512, "security subsystem started", {}},
    {legacy_security, 513, "security subsystem stopped", {}},
};

}  // namespace

constinit const question_parts cleared = {cleared_columns, cleared_sources};
constinit const question_parts clock_changes = {clock_columns, clock_sources};
constinit const question_parts starts_and_stops = {start_columns, start_sources};

}  // namespace zanvik::answers
