#include "incident_builder.h"

#include <algorithm>
#include <cstdint>

namespace zanvik::testing {
namespace {

constexpr const char* security = "Microsoft-Windows-Security-Auditing";
constexpr const char* computer = "FABRIKAM-WS02";

// One log under construction: events in the order of their times, 20 in a chunk.
class growing_log {
 public:
  growing_log(std::string provider, std::string channel)
      : provider_(std::move(provider)), channel_(std::move(channel)) {}

  void add(std::uint64_t time, std::uint32_t id, std::vector<data_field> data,
           const std::string& provider = "", payload_form form = payload_form::event_data) {
    events_.push_back({.event_id = id,
                       .provider = provider.empty() ? provider_ : provider,
                       .filetime = time,
                       .channel = channel_,
                       .computer = computer,
                       .user_sid = "S-1-5-18",
                       .form = form,
                       .data = std::move(data)});
  }
  log_builder finish() {
    std::stable_sort(events_.begin(), events_.end(),
                     [](const event& a, const event& b) { return a.filetime < b.filetime; });
    log_builder log;
    for (std::size_t first = 0; first < events_.size(); first += 20) {
      chunk_builder chunk;
      for (std::size_t i = first; i < std::min(first + 20, events_.size()); ++i) {
        chunk.add(record(i + 1, events_[i]));
      }
      log.chunk(chunk);
    }
    return log;
  }

 private:
  std::string provider_, channel_;
  std::vector<event> events_;
};

std::uint64_t at(int day, int hour, int minute, int second = 0) {
  return filetime(2024, 3, day, hour, minute, second);
}
data_field text(const char* name, const std::string& value) { return {name, slot::utf16(value)}; }

class incident {
 public:
  std::vector<std::pair<std::string, log_builder>> run() {
    for (int day = 4; day <= 22; ++day) {
      if (day == 16) break_in();
      if (day % 7 == 2 || day % 7 == 3) continue;  // weekends: the 9th and 10th, the 16th and 17th
      working_day(day);
    }
    return {{"Security.evtx", security_.finish()},
            {"System.evtx", system_.finish()},
            {"PowerShell.evtx", shell_.finish()},
            {"Defender.evtx", defender_.finish()},
            {"RemoteDesktop.evtx", sessions_.finish()}};
  }

 private:
  void logon(std::uint64_t time, std::uint32_t type, const std::string& account,
             const std::string& address, std::uint32_t id = 4624) {
    std::vector<data_field> data = {
        text("SubjectUserName", "-"),         text("TargetUserName", account),
        text("TargetDomainName", "FABRIKAM"), {"LogonType", slot::uint32(type)},
        text("WorkstationName", computer),    text("IpAddress", address)};
    if (id == 4625) {
      data.push_back({"Status", slot::hex32(0xc000006d)});
      data.push_back({"SubStatus", slot::hex32(account == "helpdesk" ? 0xc000006a : 0xc0000064)});
    }
    security_.add(time, id, std::move(data));
  }

  void program(std::uint64_t time, const std::string& account, const std::string& path,
               const std::string& line) {
    security_.add(time, 4688,
                  {text("SubjectUserName", account),
                   text("SubjectDomainName", "FABRIKAM"),
                   {"NewProcessId", slot::hex64(++process_ * 4)},
                   text("NewProcessName", path),
                   text("CommandLine", line),
                   text("ParentProcessName", "C:\\Windows\\explorer.exe")});
  }

  void working_day(int day) {
    const int late = day * 7 % 11;
    system_.add(at(day, 7, 40 + late), 12,
                {{"MajorVersion", slot::uint32(10)}, {"BuildVersion", slot::uint32(19045)}},
                "Microsoft-Windows-Kernel-General");
    logon(at(day, 7, 44 + late), 5, "SYSTEM", "-");
    logon(at(day, 7, 48 + late), 2, "anna.berg", "127.0.0.1");
    if (day % 3 == 1) logon(at(day, 7, 47 + late, 30), 2, "anna.berg", "127.0.0.1", 4625);
    for (int hour = 8; hour < 17; ++hour) {
      for (int i = 0; i <= (day + hour) % 3; ++i) {
        program(at(day, hour, (hour * 13 + 17 * i) % 60), "anna.berg",
                "C:\\Program Files\\Office\\WINWORD.EXE", "WINWORD.EXE /n letter.docx");
      }
      if (hour == 12 || hour == 15) logon(at(day, hour, 31), 7, "anna.berg", "-");
    }
    if (day == 12) {
      security_.add(
          at(day, 14, 2), 6416,
          {text("SubjectUserName", "FABRIKAM-WS02$"),
           text("DeviceId", "USB\\VID_0781&PID_5581\\4C530001230101117373"),
           text("DeviceDescription", "USB Mass Storage Device"), text("ClassName", "USB")});
    }
    system_.add(at(day, 17, 20 + late), 13, {}, "Microsoft-Windows-Kernel-General");
  }

  void break_in() {
    constexpr int day = 16;
    for (std::size_t i = 0; i < incident_failures; ++i) {
      const char* const names[] = {"administrator", "admin", "backup", "helpdesk"};
      logon(at(day, 1, 10 + static_cast<int>(i / 30), static_cast<int>(i % 30 * 2)), 3,
            names[i < 40 ? i % 4 : 3], incident_address, 4625);
    }
    logon(at(day, 1, 15, 58), 10, "helpdesk", incident_address);
    sessions_.add(at(day, 1, 16), 21,
                  {text("User", "FABRIKAM\\helpdesk"),
                   {"SessionID", slot::uint32(3)},
                   text("Address", incident_address)},
                  "", payload_form::user_data);
    program(at(day, 1, 16, 40), "helpdesk", "C:\\Windows\\System32\\cmd.exe",
            "cmd.exe /c whoami /all");
    program(at(day, 1, 17, 2), "helpdesk", "C:\\Windows\\System32\\net.exe",
            "net user support$ Passw0rd! /add");
    by_helpdesk(at(day, 1, 17, 3), 4720,
                {text("TargetUserName", "support$"), text("TargetDomainName", computer)});
    by_helpdesk(at(day, 1, 17, 9), 4732,
                {text("TargetUserName", "Administrators"), text("TargetDomainName", "Builtin"),
                 text("MemberName", "-"), text("MemberSid", "S-1-5-21-1-2-3-1107")});
    system_.add(
        at(day, 1, 18, 30), 7045,
        {text("ServiceName", "UpdaterSvc"), text("ImagePath", "C:\\Users\\Public\\upd.exe -s"),
         text("ServiceType", "user mode service"), text("StartType", "auto start"),
         text("AccountName", "LocalSystem")},
        "Service Control Manager");
    by_helpdesk(at(day, 1, 19), 4698,
                {text("TaskName", "\\Updater"),
                 text("TaskContent",
                      "<?xml version=\"1.0\"?>\r\n<Task><Actions><Exec><Command>powershell.exe"
                      "</Command><Arguments>-w hidden -f C:\\Users\\Public\\u.ps1</Arguments>"
                      "</Exec></Actions></Task>")});
    script(at(day, 1, 20));
    defender_.add(at(day, 1, 20, 50), 5001, {text("Product Name", "Microsoft Defender Antivirus")});
    defender_.add(
        at(day, 1, 21, 10), 1116,
        {text("Threat Name", "HackTool:Win32/Example.A"), text("Severity Name", "High"),
         text("Category Name", "Tool"), text("Path", "file:_C:\\Users\\Public\\upd.exe"),
         text("Detection User", "FABRIKAM\\helpdesk"), text("Action Name", "Not Applicable")});
    by_helpdesk(at(day, 1, 40), 4616,
                {{"PreviousTime", slot::filetime(at(day, 2, 40))},
                 {"NewTime", slot::filetime(at(day, 1, 40))},
                 text("ProcessName", "C:\\Windows\\System32\\cmd.exe")});
    system_.add(at(day, 1, 44), 104,
                {text("SubjectUserName", "helpdesk"), text("SubjectDomainName", "FABRIKAM"),
                 text("Channel", "Application"), text("BackupPath", "")},
                "Microsoft-Windows-Eventlog", payload_form::user_data);
  }

  void by_helpdesk(std::uint64_t time, std::uint32_t id, std::vector<data_field> data) {
    data.push_back(text("SubjectUserName", "helpdesk"));
    data.push_back(text("SubjectDomainName", "FABRIKAM"));
    security_.add(time, id, std::move(data));
  }

  // Four parts; the second comes last, the third never.
  void script(std::uint64_t time) {
    const std::pair<std::uint32_t, const char*> parts[] = {
        {1, "# collects files\r\n$from = 'C:\\Users'\r\n"},
        {4, "Remove-Item $list\r\n"},
        {2, "$list = Get-ChildItem $from -Recurse\r\n"},
    };
    for (const auto& [number, lines] : parts) {
      shell_.add(time, 4104,
                 {{"MessageNumber", slot::uint32(number)},
                  {"MessageTotal", slot::uint32(4)},
                  text("ScriptBlockText", lines),
                  text("ScriptBlockId", "2a4f5c1e-7b11-4c9d-9a55-0f6c1d2e3b4a"),
                  text("Path", "C:\\Users\\Public\\u.ps1")});
    }
  }

  growing_log security_{security, "Security"};
  growing_log system_{"Microsoft-Windows-Kernel-General", "System"};
  growing_log shell_{"Microsoft-Windows-PowerShell", "Microsoft-Windows-PowerShell/Operational"};
  growing_log defender_{"Microsoft-Windows-Windows Defender",
                        "Microsoft-Windows-Windows Defender/Operational"};
  growing_log sessions_{"Microsoft-Windows-TerminalServices-LocalSessionManager",
                        "Microsoft-Windows-TerminalServices-LocalSessionManager/Operational"};
  std::uint64_t process_ = 1000;
};

}  // namespace

std::vector<std::pair<std::string, log_builder>> incident_logs() { return incident().run(); }

}  // namespace zanvik::testing
