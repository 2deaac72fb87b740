#include <string>
#include <utility>
#include <vector>

#include "samples_builder.h"

namespace zanvik::testing {

namespace {

constexpr std::uint64_t audit_success = 0x8020000000000000, audit_failure = 0x8010000000000000;
constexpr const char* no_guid = "00000000-0000-0000-0000-000000000000";
constexpr const char* domain_sid = "S-1-5-21-1112223334-2223334445-3334445556-";

struct account {
  std::string name;
  std::string domain;
  std::string sid;
};

account user(const std::string& name, int rid) {
  return {name, "FABRIKAM", domain_sid + std::to_string(rid)};
}

const account nobody{"-", "-", "S-1-0-0"};
const account machine{"FABRIKAM-SRV01$", "FABRIKAM", "S-1-5-18"};
const account local_system{"SYSTEM", "NT AUTHORITY", "S-1-5-18"};
const account network_service{"NETWORK SERVICE", "NT AUTHORITY", "S-1-5-20"};
const account anna = user("anna.berg", 1104);
const account tom = user("tom.hale", 1105);
const account mira = user("mira.koss", 1107);
const account help_desk = user("helpdesk", 1110);
const account backup = user("svc-backup", 1120);
const account administrator = user("Administrator", 500);

// The origin of a logon.
struct origin {
  std::uint32_t logon_type;
  std::string process;
  std::string package;
  std::string workstation;
  std::string address;
  std::string port;
  std::string program;
};

const origin console{2,
                     "User32 ",
                     "Negotiate",
                     "FABRIKAM-SRV01",
                     "127.0.0.1",
                     "0",
                     "C:\\Windows\\System32\\winlogon.exe"};
const origin service{
    5, "Advapi  ", "Negotiate", "", "-", "-", "C:\\Windows\\System32\\services.exe"};

origin from_network(const std::string& workstation, const std::string& address, int port) {
  return {3, "NtLmSsp ", "NTLM", workstation, address, std::to_string(port), "-"};
}

origin from_desktop(const std::string& address, int port) {
  return {10,
          "User32 ",
          "Negotiate",
          "FABRIKAM-SRV01",
          address,
          std::to_string(port),
          "C:\\Windows\\System32\\winlogon.exe"};
}

// The log under construction: each call adds one record.
class security_log {
 public:
  // Sets the time of the next records; each record advances it by a quarter of a second.
  security_log& at(int day, int hour, int minute, int second) {
    now_ = filetime(2024, 3, day, hour, minute, second, 1'234'567);
    return *this;
  }

  // Returns the logon id, for the logoff.
  std::uint64_t logon(const account& who, const origin& how, const account& caller = nobody) {
    const std::uint64_t id = logon_id_ += 0x1f3d;
    std::vector<data_field> data = subject(caller, caller.name == "-" ? 0 : 0x3e7);
    append(data, {{"TargetUserSid", slot::sid(who.sid)},
                  {"TargetUserName", slot::utf16(who.name)},
                  {"TargetDomainName", slot::utf16(who.domain)},
                  {"TargetLogonId", slot::hex64(id)}});
    append(data, {{"LogonType", slot::uint32(how.logon_type)},
                  {"LogonProcessName", slot::utf16(how.process)},
                  {"AuthenticationPackageName", slot::utf16(how.package)},
                  {"WorkstationName", slot::utf16(how.workstation)},
                  {"LogonGuid", slot::guid(no_guid)},
                  {"TransmittedServices", slot::utf16("-")},
                  {"LmPackageName", slot::utf16(how.package == "NTLM" ? "NTLM V2" : "-")},
                  {"KeyLength", slot::uint32(how.package == "NTLM" ? 128 : 0)}});
    append(data, process_and_address(how));
    add(4624, 12544, audit_success, std::move(data));
    return id;
  }

  void failed_logon(const std::string& name, const origin& how, const char* reason,
                    std::uint32_t status, std::uint32_t sub_status) {
    std::vector<data_field> data = subject(nobody, 0);
    append(data, {{"TargetUserSid", slot::sid("S-1-0-0")},
                  {"TargetUserName", slot::utf16(name)},
                  {"TargetDomainName", slot::utf16("FABRIKAM")},
                  {"Status", slot::hex32(status)},
                  {"FailureReason", slot::utf16(reason)},
                  {"SubStatus", slot::hex32(sub_status)},
                  {"LogonType", slot::uint32(how.logon_type)},
                  {"LogonProcessName", slot::utf16(how.process)},
                  {"AuthenticationPackageName", slot::utf16(how.package)},
                  {"WorkstationName", slot::utf16(how.workstation)},
                  {"TransmittedServices", slot::utf16("-")},
                  {"LmPackageName", slot::utf16("-")},
                  {"KeyLength", slot::uint32(0)}});
    append(data, process_and_address(how));
    add(4625, 12544, audit_failure, std::move(data));
  }

  void wrong_password(const std::string& name, const origin& how) {
    failed_logon(name, how, "%%2313", 0xc000006d, 0xc000006a);
  }

  void unknown_user(const std::string& name, const origin& how) {
    failed_logon(name, how, "%%2313", 0xc000006d, 0xc0000064);
  }

  void logoff(const account& who, std::uint64_t id, std::uint32_t logon_type) {
    add(4634, 12545, audit_success,
        {{"TargetUserSid", slot::sid(who.sid)},
         {"TargetUserName", slot::utf16(who.name)},
         {"TargetDomainName", slot::utf16(who.domain)},
         {"TargetLogonId", slot::hex64(id)},
         {"LogonType", slot::uint32(logon_type)}});
  }

  void run_as(const account& caller, std::uint64_t caller_id, const account& target,
              const std::string& program) {
    std::vector<data_field> data = subject(caller, caller_id);
    append(data, {{"LogonGuid", slot::guid(no_guid)},
                  {"TargetUserName", slot::utf16(target.name)},
                  {"TargetDomainName", slot::utf16(target.domain)},
                  {"TargetLogonGuid", slot::guid(no_guid)},
                  {"TargetServerName", slot::utf16("localhost")},
                  {"TargetInfo", slot::utf16("localhost")},
                  {"ProcessId", slot::hex64(0xa5c)},
                  {"ProcessName", slot::utf16(program)},
                  {"IpAddress", slot::utf16("::1")},
                  {"IpPort", slot::utf16("0")}});
    add(4648, 12544, audit_success, std::move(data));
  }

  void password_change(const account& who, std::uint64_t id) {
    std::vector<data_field> data = target(who);
    append(data, subject(who, id));
    append(data, {{"PrivilegeList", slot::utf16("-")}});
    add(4723, 13824, audit_success, std::move(data));
  }

  void password_reset(const account& who, const account& caller, std::uint64_t caller_id) {
    std::vector<data_field> data = target(who);
    append(data, subject(caller, caller_id));
    add(4724, 13824, audit_success, std::move(data));
  }

  void special_privileges(const account& who, std::uint64_t id) {
    std::vector<data_field> data = subject(who, id);
    // One text with line breaks and tabs between the names, as Windows writes it.
    append(data, {{"PrivilegeList", slot::utf16("SeSecurityPrivilege\r\n\t\t\tSeBackupPrivilege"
                                                "\r\n\t\t\tSeRestorePrivilege")}});
    add(4672, 12548, audit_success, std::move(data));
  }

  void clock_change(const account& who, std::uint64_t id, std::uint64_t before,
                    std::uint64_t after) {
    std::vector<data_field> data = subject(who, id);
    append(data, {{"PreviousTime", slot::filetime(before)},
                  {"NewTime", slot::filetime(after)},
                  {"ProcessId", slot::hex64(0x8f4)},
                  {"ProcessName", slot::utf16("C:\\Windows\\System32\\rundll32.exe")}});
    add(4616, 12288, audit_success, std::move(data));
  }

  log_builder build() const { return log_builder().chunk(chunk_builder(records_)); }

 private:
  static void append(std::vector<data_field>& data, std::vector<data_field> more) {
    for (data_field& field : more) data.push_back(std::move(field));
  }

  static std::vector<data_field> subject(const account& who, std::uint64_t id) {
    return {{"SubjectUserSid", slot::sid(who.sid)},
            {"SubjectUserName", slot::utf16(who.name)},
            {"SubjectDomainName", slot::utf16(who.domain)},
            {"SubjectLogonId", slot::hex64(id)}};
  }

  static std::vector<data_field> target(const account& who) {
    return {{"TargetUserName", slot::utf16(who.name)},
            {"TargetDomainName", slot::utf16(who.domain)},
            {"TargetSid", slot::sid(who.sid)}};
  }

  static std::vector<data_field> process_and_address(const origin& how) {
    return {{"ProcessId", slot::hex64(how.program == "-" ? 0 : 0x1dc)},
            {"ProcessName", slot::utf16(how.program)},
            {"IpAddress", slot::utf16(how.address)},
            {"IpPort", slot::utf16(how.port)}};
  }

  void add(std::uint32_t event_id, std::uint16_t task, std::uint64_t keywords,
           std::vector<data_field> data) {
    records_.push_back(
        record(next_number_++, {.event_id = event_id,
                                .provider = "Microsoft-Windows-Security-Auditing",
                                .provider_guid = "54849625-5478-4994-a5ba-3e3b0328c30d",
                                .level = 0,
                                .task = task,
                                .keywords = keywords,
                                .filetime = now_,
                                .process_id = 476,
                                .thread_id = 1604,
                                .channel = "Security",
                                .computer = "FABRIKAM-SRV01.fabrikam.example",
                                .data = std::move(data)}));
    now_ += 2'500'000;
  }

  std::vector<record_builder> records_;
  std::uint64_t next_number_ = 4101;
  std::uint64_t now_ = 0;
  std::uint64_t logon_id_ = 0x2a1100;
};

void week_of_office_work(security_log& log) {
  log.at(4, 6, 58, 11).logon(local_system, service, machine);
  log.at(4, 6, 58, 12).logon(network_service, service, machine);
  log.at(4, 8, 2, 40).wrong_password("anna.berg", console);
  auto id = log.at(4, 8, 2, 55).logon(anna, console, machine);
  log.special_privileges(anna, id);
  auto share = log.at(4, 9, 14, 3).logon(tom, from_network("FABRIKAM-WS02", "10.20.0.42", 50112));
  log.at(4, 9, 24, 4).logoff(tom, share, 3);
  log.at(4, 17, 31, 20).logoff(anna, id, 2);
  log.at(5, 2, 0, 1).logon(backup, service, machine);
  share = log.at(5, 8, 47, 9).logon(mira, from_network("FABRIKAM-WS03", "10.20.0.43", 49733));
  log.at(5, 9, 1, 0).logoff(mira, share, 3);
  id = log.at(5, 10, 15, 30).logon(help_desk, from_desktop("10.20.0.15", 61022), machine);
  log.special_privileges(help_desk, id);
  log.at(5, 10, 17, 2).password_reset(tom, help_desk, id);
  log.at(5, 10, 18, 44).run_as(help_desk, id, administrator, "C:\\Windows\\System32\\svchost.exe");
  log.at(5, 10, 40, 5).logoff(help_desk, id, 10);
  id = log.at(5, 11, 3, 17).logon(tom, from_network("FABRIKAM-WS02", "10.20.0.42", 50381));
  log.at(5, 11, 3, 29).password_change(tom, id);
  log.at(5, 11, 9, 30).logoff(tom, id, 3);
}

void night_of_guessing(security_log& log) {
  int port = 40110;
  for (const char* name : {"admin", "administrator", "backup", "scanner"}) {
    log.at(9, 1, 12, port - 40100).unknown_user(name, from_network("", "198.51.100.77", port));
    port += 7;
  }
  for (int second = 40; second < 46; ++second) {
    log.at(9, 1, 12, second).wrong_password("helpdesk", from_desktop("198.51.100.77", port++));
  }
  log.at(9, 1, 13, 2)
      .failed_logon("svc-old", from_network("", "198.51.100.77", port), "%%2310", 0xc000006e,
                    0xc0000072);
  const auto id =
      log.at(9, 1, 15, 58).logon(help_desk, from_desktop("198.51.100.77", port + 3), machine);
  log.special_privileges(help_desk, id);
  log.at(9, 1, 19, 33)
      .clock_change(help_desk, id, filetime(2024, 3, 9, 1, 19, 33, 20),
                    filetime(2024, 3, 8, 1, 19, 33));
  log.at(9, 1, 26, 40).run_as(help_desk, id, administrator, "C:\\Temp\\tool, x86\\run|as.exe");
  log.at(9, 1, 44, 12).logoff(help_desk, id, 10);
}

void days_after(security_log& log) {
  auto id = log.at(11, 7, 55, 8).logon(administrator, console, machine);
  log.special_privileges(administrator, id);
  log.at(11, 7, 58, 31).password_reset(help_desk, administrator, id);
  log.at(11, 7, 59, 2).password_reset(anna, administrator, id);
  log.at(11, 8, 20, 45).logoff(administrator, id, 2);
  id = log.at(13, 8, 1, 13).logon(anna, from_network("FABRIKAM-WS01", "10.20.0.41", 51207));
  log.at(13, 8, 1, 20).password_change(anna, id);
  log.at(13, 8, 30, 0).logoff(anna, id, 3);
}

}  // namespace

log_builder security_sample() {
  security_log log;
  week_of_office_work(log);
  night_of_guessing(log);
  days_after(log);
  return log.build();
}

}  // namespace zanvik::testing
