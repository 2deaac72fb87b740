#include <string>
#include <utility>
#include <vector>

#include "samples_builder.h"

namespace zanvik::testing {

namespace {

constexpr std::uint64_t classic_keywords = 0x0080000000000000;
constexpr const char* workstation = "FABRIKAM-WS01";

// The log under construction: each call adds one record.
class system_log {
 public:
  system_log& at(int day, int hour, int minute, int second, int hundred_ns = 0) {
    now_ = filetime(2024, 5, day, hour, minute, second, hundred_ns);
    return *this;
  }

  void kernel_start() {
    add({.event_id = 12,
         .provider = "Microsoft-Windows-Kernel-General",
         .provider_guid = "a68ca8b7-004f-d7b6-a698-07e2de0f1f5d",
         .task = 1,
         .keywords = 0x8000000000000080,
         .user_sid = "S-1-5-18",
         .data = {{"MajorVersion", slot::uint32(6)},
                  {"MinorVersion", slot::uint32(1)},
                  {"BuildVersion", slot::uint32(7601)},
                  {"QfeVersion", slot::uint32(17514)},
                  {"ServiceVersion", slot::uint32(1)},
                  {"BootMode", slot::uint32(0)},
                  {"StartTime", slot::filetime(now_ - 1'234'500)}}});
  }

  void kernel_stop() {
    add({.event_id = 13,
         .provider = "Microsoft-Windows-Kernel-General",
         .provider_guid = "a68ca8b7-004f-d7b6-a698-07e2de0f1f5d",
         .task = 2,
         .keywords = 0x8000000000000080,
         .user_sid = "S-1-5-18",
         .data = {{"StopTime", slot::filetime(now_)}}});
  }

  // The log service's own start (6005), stop (6006) and system version (6009).
  void event_log(std::uint32_t event_id, slot_value data, byte_vector binary = {}) {
    slot_value tail = binary.empty() ? slot::null() : slot::binary(std::move(binary));
    add({.event_id = event_id,
         .provider = "EventLog",
         .qualifiers = 0x8000,
         .keywords = classic_keywords,
         .form = payload_form::unnamed_event_data,
         .data = {{"", std::move(data)}, {"Binary", std::move(tail)}},
         .classic = true});
  }

  void service_state(const char* name, const char* state) {
    add({.event_id = 7036,
         .provider = "Service Control Manager",
         .provider_guid = "555908d1-a6d7-4695-8e1e-26931d2012f4",
         .qualifiers = 0x4000,
         .keywords = 0x8080000000000000,
         .process_id = 468,
         .thread_id = 1212,
         .data = {{"param1", slot::utf16(name)}, {"param2", slot::utf16(state)}}});
  }

  void restart_asked_for(const char* program, const char* reason, const char* kind) {
    add({.event_id = 1074,
         .provider = "USER32",
         .qualifiers = 0x8000,
         .keywords = classic_keywords,
         .user_sid = "S-1-5-21-1112223334-2223334445-3334445556-1104",
         .form = payload_form::unnamed_event_data,
         .data = {{"", slot::multi_utf16({program, workstation, reason, "0x500ff", kind, "",
                                          "FABRIKAM\\anna.berg"})},
                  {"Binary", slot::binary(bytes_of({0xff, 0, 5, 0x80, 0, 0, 0, 0}))}},
         .classic = true});
  }

  void sleep() {
    add({.event_id = 42,
         .provider = "Microsoft-Windows-Kernel-Power",
         .provider_guid = "331c3b3a-2005-44c2-ac5e-77220c37d6b4",
         .task = 64,
         .keywords = 0x8000000000000004,
         .data = {{"TargetState", slot::uint32(4)},
                  {"EffectiveState", slot::uint32(4)},
                  {"Reason", slot::uint32(4)},
                  {"Flags", slot::uint32(0)}}});
  }

  void resume(std::uint64_t asleep_since) {
    add({.event_id = 1,
         .provider = "Microsoft-Windows-Power-Troubleshooter",
         .provider_guid = "cdc05e28-c449-49c6-b9d2-88cf761644df",
         .version = 1,
         .keywords = 0x8000000000000000,
         .user_sid = "S-1-5-19",
         .data = {{"SleepTime", slot::filetime(asleep_since)},
                  {"WakeTime", slot::filetime(now_ - 30'000'000)},
                  {"SleepDuration", slot::uint32(1871)},
                  {"WakeSourceType", slot::uint32(1)},
                  {"WakeSourceTextLength", slot::uint32(0)},
                  {"WakeSourceText", slot::utf16("")}}});
  }

  void disk_error() {
    add({.event_id = 7,
         .provider = "disk",
         .qualifiers = 0xc004,
         .level = 2,
         .keywords = classic_keywords,
         .form = payload_form::unnamed_event_data,
         .data = {{"", slot::multi_utf16({"\\Device\\Harddisk1\\DR1"})},
                  {"Binary",
                   slot::binary(bytes_of({3, 0, 0x68, 0, 1, 0, 0xb6, 0, 7, 0, 4, 0xc0}))}},
         .classic = true});
  }

  std::uint64_t now() const { return now_; }
  log_builder build() const { return log_builder().chunk(chunk_builder(records_)); }

 private:
  void add(event content) {
    content.filetime = now_;
    content.channel = "System";
    content.computer = workstation;
    records_.push_back(record(next_number_++, std::move(content)));
  }

  std::vector<record_builder> records_;
  std::uint64_t next_number_ = 1;
  std::uint64_t now_ = 0;
};

void boot(system_log& log, int day, int hour, int minute) {
  log.at(day, hour, minute, 5, 5'394'507).kernel_start();
  log.at(day, hour, minute, 21)
      .event_log(6009, slot::multi_utf16({"6.01.", "7601", "Service Pack 1", "Multiprocessor Free",
                                          "17514", ""}));
  log.event_log(6005, slot::null(), bytes_of({0xe8, 7, 5, 0, 1, 0, 6, 0}));
  log.at(day, hour, minute, 24, 1'000'001).service_state("DHCP Client", "running");
  log.at(day, hour, minute, 24, 1'000'002).service_state("Windows Event Log", "running");
  log.at(day, hour, minute, 31).service_state("Print Spooler", "running");
}

void shut_down(system_log& log, int day, int hour, int minute) {
  log.at(day, hour, minute, 10).service_state("Print Spooler", "stopped");
  log.at(day, hour, minute, 12).event_log(6006, slot::null(), bytes_of({1, 0, 0, 0}));
  log.at(day, hour, minute, 14, 9'999'999).kernel_stop();
}

}  // namespace

log_builder system_sample() {
  system_log log;
  boot(log, 4, 7, 51);
  log.at(4, 12, 2, 0).sleep();
  const std::uint64_t asleep_since = log.now();
  log.at(4, 12, 33, 14).resume(asleep_since);
  log.at(4, 15, 20, 41).disk_error();
  log.at(4, 17, 29, 58)
      .restart_asked_for("C:\\Windows\\system32\\winlogon.exe (FABRIKAM-WS01)",
                         "No title for this reason could be found", "power off");
  shut_down(log, 4, 17, 30);
  boot(log, 7, 8, 3);
  log.at(7, 9, 45, 7).service_state("Windows Update", "stopped");
  log.at(7, 9, 46, 30)
      .restart_asked_for("C:\\Windows\\servicing\\TrustedInstaller.exe (FABRIKAM-WS01)",
                         "Operating System: Upgrade (Planned)", "restart");
  shut_down(log, 7, 9, 47);
  boot(log, 7, 9, 49);
  return log.build();
}

}  // namespace zanvik::testing
