#include "inspect/record_sequence.h"

#include "base/limits.h"
#include "base/time_format.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

constexpr std::uint64_t jump_least = 60 * qx::ticks_per_second;
constexpr std::uint64_t year_1990 = 122'755'392'000'000'000;  // 1990-01-01 as FILETIME

}  // namespace

std::string utc_text(std::uint64_t filetime) {
  std::string date;
  std::string time;
  format_default(date, time, qx::time(filetime, qx::type_time::filetime), false, false, false);
  return date.empty() ? std::string() : date + ' ' + time;
}

std::string numbers_text(std::uint64_t first, std::uint64_t last) {
  if (first == last) return "1 record (" + std::to_string(first) + ')';
  return std::to_string(last - first + 1) + " records (" + std::to_string(first) + " to " +
         std::to_string(last) + ')';
}

void record_sequence::add(const sequence_record& record) {
  check_time(record);
  if (previous_) compare(*previous_, record);
  previous_ = record;
}

void record_sequence::check_time(const sequence_record& record) {
  const std::uint64_t time = record.time_written;
  if (time < year_1990 || (latest_ != 0 && time > latest_)) {
    const std::string text = utc_text(time);
    finding& made = time == 0 ? findings_.add(finding_kind::time_missing, record.offset, "no time")
                              : findings_.add(finding_kind::time_impossible, record.offset,
                                              "written " + (text.empty() ? "at no time" : text));
    made.chunk = record.chunk;
    made.record = record.number;
    return;
  }
  if (first_time_ == 0 || time < first_time_) first_time_ = time;
  if (time > last_time_) last_time_ = time;
}

void record_sequence::compare(const sequence_record& before, const sequence_record& next) {
  const auto found = [&](finding_kind kind, std::string detail) {
    finding& made = findings_.add(kind, next.offset, std::move(detail));
    made.chunk = next.chunk;
    made.record = next.number;
  };
  if (next.number <= before.number) {
    found(finding_kind::number_repeated, "record " + std::to_string(next.number) +
                                             " follows record " + std::to_string(before.number));
    return;
  }
  if (next.number - before.number > 1) {
    found(finding_kind::number_gap,
          numbers_text(before.number + 1, next.number - 1) + " missing before this one");
  }
  const bool both_times = before.time_written >= year_1990 && next.time_written >= year_1990;
  if (both_times && before.time_written > next.time_written &&
      before.time_written - next.time_written > jump_least &&
      jumps_.size() < limits::findings_of_a_kind) {
    jumps_.push_back({next, before.time_written});
  }
}

}  // namespace zanvik
