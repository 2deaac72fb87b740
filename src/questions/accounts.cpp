// Accounts, their passwords and rights, and groups, as they were changed.
#include "questions/answers.h"
#include "questions/codes.h"

namespace zanvik::answers {
namespace {

constexpr question_column account_columns[] = {
    {"account", "Account"},
    {"domain", "Domain"},
    {"by_account", "By account"},
    {"by_domain", "By domain"},
    {"details", "Details", &codes::message_words},
    {"sid", "SID"},
};
constexpr question_source account_sources[] = {
    {security,
     4720,
     "account created",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "DisplayName",
      "TargetSid"}},
    {security,
     4722,
     "account enabled",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4723,
     "password change by its user",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4724,
     "password reset",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4725,
     "account disabled",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4726,
     "account deleted",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4738,
     "account changed",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName",
      "SamAccountName", "TargetSid"}},
    // TargetDomainName is the computer from which the attempts came.
    {security,
     4740,
     "account locked out",
     {"TargetUserName", "", "SubjectUserName", "SubjectDomainName", "TargetDomainName",
      "TargetSid"}},
    {security,
     4741,
     "computer account created",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "DnsHostName",
      "TargetSid"}},
    {security,
     4742,
     "computer account changed",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName",
      "SamAccountName", "TargetSid"}},
    {security,
     4743,
     "computer account deleted",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4765,
     "SID history added",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName",
      "SourceUserName", "TargetSid"}},
    {security,
     4767,
     "account unlocked",
     {"TargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName", "",
      "TargetSid"}},
    {security,
     4781,
     "account renamed",
     {"OldTargetUserName", "TargetDomainName", "SubjectUserName", "SubjectDomainName",
      "NewTargetUserName", "TargetSid"}},
    {security,
     4794,
     "recovery mode password set",
     {"", "", "SubjectUserName", "SubjectDomainName", "Workstation"}},
    {security,
     4704,
     "right granted",
     {"", "", "SubjectUserName", "SubjectDomainName", "PrivilegeList", "TargetSid"}},
    {security,
     4705,
     "right removed",
     {"", "", "SubjectUserName", "SubjectDomainName", "PrivilegeList", "TargetSid"}},
    {security,
     4717,
     "logon right granted",
     {"", "", "SubjectUserName", "SubjectDomainName", "AccessGranted", "TargetSid"}},
    {security,
     4718,
     "logon right removed",
     {"", "", "SubjectUserName", "SubjectDomainName", "AccessRemoved", "TargetSid"}},
    {legacy_security, 624, "account created", {"#0", "#1", "#3", "#4", "#8", "#2"}},
    {legacy_security, 626, "account enabled", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 627, "password change by its user", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 628, "password reset", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 629, "account disabled", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 630, "account deleted", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 642, "account changed", {"#1", "#2", "#4", "#5", "#0", "#3"}},
    {legacy_security, 644, "account locked out", {"#0", "", "#3", "#4", "#2", "#1"}},
    {legacy_security, 671, "account unlocked", {"#0", "#1", "#3", "#4", "", "#2"}},
    {legacy_security, 685, "account renamed", {"#0", "#2", "#4", "#5", "#1", "#3"}},
};

constexpr question_column group_columns[] = {
    {"group_name", "Group"},        {"domain", "Domain"},         {"member", "Member"},
    {"member_sid", "Member's SID"}, {"by_account", "By account"}, {"by_domain", "By domain"},
};

// A change of a group; global, local and universal groups have numbers of their own.
constexpr question_source group_change(std::uint16_t event_id, std::string_view what) {
  return {security,
          event_id,
          what,
          {"TargetUserName", "TargetDomainName", "", "", "SubjectUserName", "SubjectDomainName"}};
}
constexpr question_source member_change(std::uint16_t event_id, std::string_view what) {
  return {security,
          event_id,
          what,
          {"TargetUserName", "TargetDomainName", "MemberName", "MemberSid", "SubjectUserName",
           "SubjectDomainName"}};
}
constexpr question_source legacy_member_change(std::uint16_t event_id, std::string_view what) {
  return {legacy_security, event_id, what, {"#2", "#3", "#0", "#1", "#5", "#6"}};
}
constexpr question_source group_sources[] = {
    group_change(4727, "group created"),         group_change(4731, "group created"),
    group_change(4754, "group created"),         group_change(4730, "group deleted"),
    group_change(4734, "group deleted"),         group_change(4758, "group deleted"),
    group_change(4735, "group changed"),         group_change(4737, "group changed"),
    group_change(4755, "group changed"),         member_change(4728, "member added"),
    member_change(4732, "member added"),         member_change(4756, "member added"),
    member_change(4729, "member removed"),       member_change(4733, "member removed"),
    member_change(4757, "member removed"),       legacy_member_change(632, "member added"),
    legacy_member_change(636, "member added"),   legacy_member_change(660, "member added"),
    legacy_member_change(633, "member removed"), legacy_member_change(637, "member removed"),
    legacy_member_change(661, "member removed"),
};

}  // namespace

constinit const question_parts accounts = {account_columns, account_sources};
constinit const question_parts groups = {group_columns, group_sources};

}  // namespace zanvik::answers
