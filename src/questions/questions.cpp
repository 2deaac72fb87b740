#include "questions/questions.h"

#include "questions/answers.h"

namespace zanvik {
namespace {

constexpr std::string_view groups[] = {
    "logons",   "failed logons", "remote desktop", "services and tasks",
    "programs", "scripts",       "accounts",       "system",
    "devices",  "malware",       "cleared logs",
};

constexpr question make(std::string_view name, std::string_view title, std::string_view group,
                        const question_parts& parts) {
  return {name, title, group, parts.columns, parts.sources};
}

}  // namespace

std::span<const std::string_view> question_groups() { return groups; }

std::span<const question> questions() {
  static const question all[] = {
      make("logons", "Logons", "logons", answers::logons),
      make("failed_logons", "Failed logons", "failed logons", answers::failed_logons),
      make("explicit_logons", "Credentials of another account used", "logons",
           answers::explicit_logons),
      make("rdp", "Remote desktop", "remote desktop", answers::remote_desktop),
      make("services", "Services", "services and tasks", answers::services),
      make("tasks", "Scheduled tasks", "services and tasks", answers::tasks),
      make("processes", "Processes", "programs", answers::processes),
      make("script_blocks", "PowerShell script blocks", "scripts", answers::script_blocks),
      make("accounts", "Accounts changed", "accounts", answers::accounts),
      make("groups", "Groups changed", "accounts", answers::groups),
      make("cleared", "Logs cleared, auditing changed", "cleared logs", answers::cleared),
      make("clock_changes", "Clock changes", "system", answers::clock_changes),
      make("starts_and_stops", "Starts and stops", "system", answers::starts_and_stops),
      make("start_types", "Start types of services changed", "system", answers::start_types),
      make("usb", "USB devices", "devices", answers::usb),
      make("defender", "Defender", "malware", answers::defender),
  };
  return all;
}

std::string_view words_for(const code_table& codes, std::string_view code) {
  const auto same = [code](std::string_view known) {
    if (known.size() != code.size()) return false;
    for (std::size_t i = 0; i < code.size(); ++i) {
      const char c = code[i];
      if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c) != known[i]) return false;
    }
    return true;
  };
  for (const code_word& row : codes.rows) {
    if (same(row.code)) return row.words;
  }
  return {};
}

}  // namespace zanvik
