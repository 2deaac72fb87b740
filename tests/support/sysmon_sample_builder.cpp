#include <string>
#include <utility>
#include <vector>

#include "samples_builder.h"

namespace zanvik::testing {

namespace {

constexpr const char* workstation = "FABRIKAM-WS01";
constexpr const char* user = "FABRIKAM\\anna.berg";

// The log under construction: each call adds one record of Sysmon's, a few seconds after the last.
class sysmon_log {
 public:
  // Started by `parent`, both with their command lines.
  void process(const std::string& image, const std::string& line, const std::string& parent,
               const std::string& parent_line) {
    ++process_;
    add(1, 5,
        {{"ProcessGuid", guid()},
         {"ProcessId", slot::uint32(4000 + 4 * process_)},
         {"Image", slot::utf16(image)},
         {"FileVersion", slot::utf16("10.0.19041.1")},
         {"OriginalFileName", slot::utf16(image.substr(image.rfind('\\') + 1))},
         {"CommandLine", slot::utf16(line)},
         {"CurrentDirectory", slot::utf16("C:\\Users\\anna.berg\\")},
         {"User", slot::utf16(user)},
         {"LogonId", slot::hex64(0x3e7a1)},
         {"IntegrityLevel", slot::utf16("Medium")},
         {"ParentImage", slot::utf16(parent)},
         {"ParentCommandLine", slot::utf16(parent_line)}});
  }

  void connection(const std::string& image, const std::string& address, std::uint16_t port) {
    add(3, 5,
        {{"ProcessGuid", guid()},
         {"ProcessId", slot::uint32(4000 + 4 * process_)},
         {"Image", slot::utf16(image)},
         {"User", slot::utf16(user)},
         {"Protocol", slot::utf16("tcp")},
         {"Initiated", slot::boolean(true)},
         {"SourceIp", slot::utf16("10.20.0.15")},
         {"DestinationIp", slot::utf16(address)},
         {"DestinationPort", slot::uint16(port)}});
  }

  void file(const std::string& image, const std::string& path) {
    add(11, 2,
        {{"ProcessGuid", guid()},
         {"ProcessId", slot::uint32(4000 + 4 * process_)},
         {"Image", slot::utf16(image)},
         {"TargetFilename", slot::utf16(path)},
         {"User", slot::utf16(user)}});
  }

  void value_set(const std::string& image, const std::string& object, const std::string& details) {
    add(13, 2,
        {{"EventType", slot::utf16("SetValue")},
         {"ProcessGuid", guid()},
         {"ProcessId", slot::uint32(4000 + 4 * process_)},
         {"Image", slot::utf16(image)},
         {"TargetObject", slot::utf16(object)},
         {"Details", slot::utf16(details)},
         {"User", slot::utf16(user)}});
  }

  log_builder finish() const { return log_builder().chunk(chunk_); }

 private:
  slot_value guid() const {
    return slot::guid("5aa13a44-0d08-68fc-dc1d-0000000" + std::to_string(40000 + process_));
  }

  void add(std::uint32_t id, std::uint8_t version, std::vector<data_field> data) {
    now_ += 7'300'000;
    data.insert(data.begin(), {"RuleName", slot::utf16("-")});
    chunk_.add(record(number_++, {.event_id = id,
                                  .provider = "Microsoft-Windows-Sysmon",
                                  .provider_guid = "5770385f-c22a-43e0-bf4c-06f5698ffbd9",
                                  .version = version,
                                  .task = static_cast<std::uint16_t>(id),
                                  .filetime = now_,
                                  .process_id = 2284,
                                  .thread_id = 3120,
                                  .channel = "Microsoft-Windows-Sysmon/Operational",
                                  .computer = workstation,
                                  .user_sid = "S-1-5-18",
                                  .data = std::move(data)}));
  }

  chunk_builder chunk_;
  std::uint64_t number_ = 1;
  std::uint64_t now_ = filetime(2024, 5, 7, 9, 12, 0);
  std::uint32_t process_ = 0;
};

}  // namespace

log_builder sysmon_sample() {
  const std::string explorer = "C:\\Windows\\explorer.exe";
  const std::string word = "C:\\Program Files\\Office\\WINWORD.EXE";
  const std::string shell = "C:\\Windows\\System32\\WindowsPowerShell\\v1.0\\powershell.exe";
  const std::string tool = "C:\\Users\\anna.berg\\AppData\\Local\\Temp\\update.exe";
  sysmon_log log;
  log.process("C:\\Windows\\System32\\notepad.exe", "notepad.exe notes.txt", explorer,
              "explorer.exe");
  log.process(word, "WINWORD.EXE /n \"C:\\Users\\anna.berg\\Downloads\\offer.docm\"", explorer,
              "explorer.exe");
  // The text is "whoami" in UTF-16 and Base64, once with a hyphen, once with a slash.
  log.process(shell, "powershell.exe -nop -enc dwBoAG8AYQBtAGkA", word,
              "WINWORD.EXE /n offer.docm");
  log.connection(shell, "203.0.113.80", 443);
  log.file(shell, tool);
  log.process(tool, "update.exe", shell, "powershell.exe -nop -enc dwBoAG8AYQBtAGkA");
  log.value_set(
      tool, "HKU\\S-1-5-21-1-2-3-1001\\Software\\Microsoft\\Windows\\CurrentVersion\\Run\\Update",
      tool);
  log.connection(tool, "10.20.0.7", 445);
  log.process(shell, "powershell.exe /ENC dwBoAG8AYQBtAGkA", tool, "update.exe");
  log.file("C:\\Windows\\System32\\svchost.exe", "C:\\Windows\\Temp\\state.log");
  return log.finish();
}

}  // namespace zanvik::testing
