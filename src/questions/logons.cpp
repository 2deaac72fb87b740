// Who logged on, who failed to, with whose credentials, and remote desktop sessions.
#include "questions/answers.h"
#include "questions/codes.h"

namespace zanvik::answers {
namespace {

constexpr question_column logon_columns[] = {
    {"account", "Account"},
    {"domain", "Domain"},
    {"logon_type", "Type", &codes::logon_types},
    {"source_address", "Source address"},
    {"source_host", "Source host"},
    {"process", "Process"},
    {"package", "Package"},
    {"by_account", "Requested by"},
    {"logon_id", "Logon ID"},
    {"sid", "SID"},
};
constexpr question_source logon_sources[] = {
    {security,
     4624,
     "logon",
     {"TargetUserName", "TargetDomainName", "LogonType", "IpAddress", "WorkstationName",
      "ProcessName", "AuthenticationPackageName", "SubjectUserName", "TargetLogonId",
      "TargetUserSid"}},
    {legacy_security,
     528,
     "logon",
     {"#0", "#1", "#3", "#13", "#6", "#4", "#5", "#8", "#2", "@UserID"}},
    {legacy_security,
     540,
     "logon",
     {"#0", "#1", "#3", "#13", "#6", "#4", "#5", "#8", "#2", "@UserID"}},
};

constexpr question_column failed_columns[] = {
    {"account", "Account"},
    {"domain", "Domain"},
    {"reason", "Reason", &codes::logon_failures},
    {"logon_type", "Type", &codes::logon_types},
    {"source_address", "Source address"},
    {"source_host", "Source host"},
    {"process", "Process"},
    {"package", "Package"},
    {"by_account", "Requested by"},
};
// Failures of Kerberos and NTLM are of the account's domain controller; it has a record of its own
// for each, besides that of the computer that was logged on to.
constexpr question_source failed_sources[] = {
    {security,
     4625,
     "logon failed",
     {"TargetUserName", "TargetDomainName", "SubStatus|Status", "LogonType", "IpAddress",
      "WorkstationName", "ProcessName", "AuthenticationPackageName", "SubjectUserName"}},
    {security,
     4768,
     "Kerberos ticket refused",
     {"TargetUserName", "TargetDomainName", "Status", "", "IpAddress"},
     "Status!=0x0"},
    {security,
     4771,
     "Kerberos pre-authentication failed",
     {"TargetUserName", "", "Status", "", "IpAddress"}},
    {security,
     4776,
     "NTLM credentials refused",
     {"TargetUserName", "", "Status", "", "", "Workstation", "", "PackageName"},
     "Status!=0x0"},
    {legacy_security,
     529,
     "wrong account or password",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     530,
     "outside the permitted hours",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     531,
     "account disabled",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     532,
     "account expired",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     533,
     "not permitted on this computer",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     534,
     "logon type not granted",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     535,
     "password expired",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security,
     537,
     "logon failed",
     {"#0", "#1", "#7|#6", "#2", "#13", "#5", "#3", "#4", "#8"}},
    {legacy_security,
     539,
     "account locked out",
     {"#0", "#1", "", "#2", "#11", "#5", "#3", "#4", "#6"}},
    {legacy_security, 675, "Kerberos pre-authentication failed", {"#0", "", "#4", "", "#5"}},
};

constexpr question_column explicit_columns[] = {
    {"account", "Account used"},          {"domain", "Domain"},   {"target_host", "Target"},
    {"source_address", "Source address"}, {"process", "Process"}, {"by_account", "By account"},
    {"by_domain", "By domain"},
};
constexpr question_source explicit_sources[] = {
    {security,
     4648,
     "credentials given",
     {"TargetUserName", "TargetDomainName", "TargetServerName", "IpAddress", "ProcessName",
      "SubjectUserName", "SubjectDomainName"}},
    {legacy_security, 552, "credentials given", {"#4", "#5", "#7", "#10", "", "#0", "#1"}},
};

constexpr std::string_view sessions = "Microsoft-Windows-TerminalServices-LocalSessionManager";
constexpr std::string_view connections =
    "Microsoft-Windows-TerminalServices-RemoteConnectionManager";
constexpr std::string_view rdp_core = "Microsoft-Windows-RemoteDesktopServices-RdpCoreTS";
constexpr std::string_view rdp_client = "Microsoft-Windows-TerminalServices-ClientActiveXCore";

constexpr question_column remote_columns[] = {
    {"account", "Account"},         {"domain", "Domain"},   {"source_address", "Source address"},
    {"source_host", "Source host"}, {"session", "Session"}, {"target_host", "Target"},
};
constexpr question_source remote_sources[] = {
    {sessions, 21, "session logon", {"User", "", "Address", "", "SessionID"}},
    {sessions, 23, "session logoff", {"User", "", "", "", "SessionID"}},
    {sessions, 24, "session disconnected", {"User", "", "Address", "", "SessionID"}},
    {sessions, 25, "session reconnected", {"User", "", "Address", "", "SessionID"}},
    {sessions, 39, "disconnected by another session", {"", "", "", "", "TargetSession"}},
    {connections, 1149, "network connection", {"Param1", "Param2", "Param3"}},
    {rdp_core, 131, "connection accepted", {"", "", "ClientIP"}},
    {rdp_core, 140, "connection with wrong credentials", {"", "", "IPString"}},
    {security,
     4778,
     "session reconnected",
     {"AccountName", "AccountDomain", "ClientAddress", "ClientName", "SessionName"}},
    {security,
     4779,
     "session disconnected",
     {"AccountName", "AccountDomain", "ClientAddress", "ClientName", "SessionName"}},
    {security, 4825, "access refused", {"AccountName", "AccountDomain", "ClientAddress"}},
    {legacy_security, 682, "session reconnected", {"#0", "#1", "#5", "#4", "#3"}},
    {legacy_security, 683, "session disconnected", {"#0", "#1", "#5", "#4", "#3"}},
    {rdp_client, 1024, "connects to another computer", {"", "", "", "", "", "Value"}},
    {rdp_client, 1102, "connects to another computer", {"", "", "", "", "", "Value"}},
};

}  // namespace

constinit const question_parts logons = {logon_columns, logon_sources};
constinit const question_parts failed_logons = {failed_columns, failed_sources};
constinit const question_parts explicit_logons = {explicit_columns, explicit_sources};
constinit const question_parts remote_desktop = {remote_columns, remote_sources};

}  // namespace zanvik::answers
