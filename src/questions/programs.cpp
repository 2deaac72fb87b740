// What was installed and what ran.
#include "questions/answers.h"
#include "questions/codes.h"

namespace zanvik::answers {
namespace {

constexpr std::string_view service_manager = "Service Control Manager";

constexpr question_column service_columns[] = {
    {"service", "Service"},
    {"command", "Program"},
    {"service_type", "Type", &codes::service_types},
    {"start_type", "Start", &codes::start_types},
    {"run_as", "Runs as"},
    {"by_account", "By account"},
    {"by_domain", "By domain"},
};
constexpr question_source service_sources[] = {
    {service_manager,
     7045,
     "service installed",
     {"ServiceName", "ImagePath", "ServiceType", "StartType", "AccountName"}},
    {security,
     4697,
     "service installed",
     {"ServiceName", "ServiceFileName", "ServiceType", "ServiceStartType", "ServiceAccount",
      "SubjectUserName", "SubjectDomainName"}},
    {legacy_security, 601, "service installed", {"#0", "#1", "#2", "#3", "#4", "#5", "#6"}},
};

constexpr question_column start_type_columns[] = {
    {"service", "Service"},
    {"start_type", "Start", &codes::start_types},
    {"old_start_type", "Start before", &codes::start_types},
};
constexpr question_source start_type_sources[] = {
    {service_manager, 7040, "start type changed", {"param4|param1|#0", "param3|#2", "param2|#1"}},
};

constexpr std::string_view scheduler = "Microsoft-Windows-TaskScheduler";

constexpr question_column task_columns[] = {
    {"task", "Task"},
    {"account", "Account"},
    {"domain", "Domain"},
    {"content", "Content"},
};
constexpr question_source task_sources[] = {
    {security,
     4698,
     "task created",
     {"TaskName", "SubjectUserName", "SubjectDomainName", "TaskContent"}},
    {security,
     4699,
     "task deleted",
     {"TaskName", "SubjectUserName", "SubjectDomainName", "TaskContent"}},
    {security,
     4700,
     "task enabled",
     {"TaskName", "SubjectUserName", "SubjectDomainName", "TaskContent"}},
    {security,
     4701,
     "task disabled",
     {"TaskName", "SubjectUserName", "SubjectDomainName", "TaskContent"}},
    {security,
     4702,
     "task changed",
     {"TaskName", "SubjectUserName", "SubjectDomainName", "TaskContentNew"}},
    {scheduler, 106, "task registered", {"TaskName", "UserContext"}},
    {scheduler, 140, "task changed", {"TaskName", "UserName"}},
    {scheduler, 141, "task deleted", {"TaskName", "UserName"}},
    {legacy_security, 602, "task created", {"#0", "#6", "#7", "#1"}},
};

constexpr std::string_view sysmon = "Microsoft-Windows-Sysmon";

constexpr question_column process_columns[] = {
    {"image", "Program"},
    {"command_line", "Command line"},
    {"account", "Account"},
    {"domain", "Domain"},
    {"parent_image", "Parent"},
    {"parent_command_line", "Parent's command line"},
    {"process_id", "Process ID"},
    {"parent_process_id", "Parent's ID"},
    {"integrity", "Integrity", &codes::integrity_levels},
    {"hashes", "Hashes"},
};
constexpr question_source process_sources[] = {
    {security,
     4688,
     "process started",
     {"NewProcessName", "CommandLine", "TargetUserName|SubjectUserName",
      "TargetDomainName|SubjectDomainName", "ParentProcessName", "", "NewProcessId", "ProcessId",
      "MandatoryLabel"}},
    {sysmon,
     1,
     "process started",
     {"Image", "CommandLine", "User", "", "ParentImage", "ParentCommandLine", "ProcessId",
      "ParentProcessId", "IntegrityLevel", "Hashes"}},
    {legacy_security, 592, "process started", {"#1", "", "#3", "#4", "", "", "#0", "#2"}},
};

// A script block that is too long for one event comes in several, which the block's ID joins.
constexpr question_column script_columns[] = {
    {"script", "Script"}, {"path", "File"},   {"script_block_id", "Script block"},
    {"part", "Part"},     {"parts", "Parts"}, {"sid", "SID"},
};
constexpr question_source script_sources[] = {
    {"Microsoft-Windows-PowerShell",
     4104,
     "script block",
     {"ScriptBlockText", "Path", "ScriptBlockId", "MessageNumber", "MessageTotal", "@UserID"}},
    {"PowerShellCore",
     4104,
     "script block",
     {"ScriptBlockText", "Path", "ScriptBlockId", "MessageNumber", "MessageTotal", "@UserID"}},
};

}  // namespace

constinit const question_parts services = {service_columns, service_sources};
constinit const question_parts start_types = {start_type_columns, start_type_sources};
constinit const question_parts tasks = {task_columns, task_sources};
constinit const question_parts processes = {process_columns, process_sources};
constinit const question_parts script_blocks = {script_columns, script_sources};

}  // namespace zanvik::answers
