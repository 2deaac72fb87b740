// What a report says about the logs themselves and about how it was made.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zanvik {

struct head_finding {
  std::string kind, detail, meaning;
  std::uint64_t offset = 0;
  bool is_note = false;
};

struct head_log {
  std::string path, format, sha256;
  std::uint64_t size = 0;
  std::uint64_t events = 0;           // that the report is made of
  std::uint64_t first = 0, last = 0;  // FILETIMEs
  bool checked = false;
  std::uint64_t finding_count = 0, note_count = 0;
  std::vector<head_finding> findings;  // the first of them
};

struct report_head {
  std::string version, command_line;
  bool can_check = false;  // the program was built with `check`
  std::vector<head_log> logs;
  std::vector<std::string> problems;  // what could not be read, a line each
};

}  // namespace zanvik
