// The counters of the log read last: how many records of each event ID there are, the times of the
// first and last, and how often each combination of the `-hist` fields occurs; and their table.
//
// Every record that is read counts, selected or not; combinations count for records that a command
// kept. Counting uses a record's own values and cannot fail.
// kept. Counting takes a record's own values and can fail in nothing.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "commands/report_command.h"
#include "events/log_record.h"
#include "options/output_format.h"

namespace zanvik {

struct EventCount {
  std::uint64_t count = 0;
  std::uint64_t first_time = std::numeric_limits<std::uint64_t>::max();  // FILETIME
  std::uint64_t last_time = 0;
  std::uint64_t event_id = 0;

  void add(std::uint64_t time);
  void add(const EventCount& part);
};

// A combination of key values under one command.
struct HistEntry {
  EventCount seen;
  std::vector<std::string> key_fields;
  std::vector<std::string> key_values;
  std::int32_t filter_number = 0;  // the command's `hist_index`
};

struct LogStatistics {
  std::string log_path;
  std::string log_type;  // the channel; shown if there is one
  bool is_evtx = true;
  std::string date_format = "mm/dd/yyyy";
  std::string time_format = "hh:mm:ss.xxx";
  format_descriptor descriptor;
  std::string separator = " | ";
  EventCount all;
  std::map<std::uint64_t, EventCount> per_event;
  std::vector<std::map<std::string, HistEntry>> hist_tables;  // by `hist_index`

  // Entries of `per_event` that were used recently, by the low bits of their IDs.
  std::array<EventCount*, 64> recent{};
};

// Resets the counters for a log. An empty format means the default.
void init_statistics(LogStatistics& stats, std::string_view path, std::string_view type,
                     bool is_evtx, std::size_t hist_count, std::string_view date_format,
                     std::string_view time_format);

// Counts a record that was read.
void count_record(LogStatistics& stats, std::uint64_t event_id, std::uint64_t time);

// Counts a kept record under a command, if the command has fields to count by, is for the record's
// event ID, and the record has all of the fields.
void count_hist(LogStatistics& stats, const ReportCommand& command, const LogRecord& record);

// Counts a kept record under the command that kept it, number `first`, and under all later ones:
// these only count, without further selection.
void count_hist_from(LogStatistics& stats, const command_refs& commands, std::size_t first,
                     const LogRecord& record);

// Adds the counters of the part of a log that follows. They were reset like those of `stats`.
void add_statistics(LogStatistics& stats, const LogStatistics& part);

// Writes the block of one log.
void write_statistics(const LogStatistics& stats, std::ostream& out);

}  // namespace zanvik
