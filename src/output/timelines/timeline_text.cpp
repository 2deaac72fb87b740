#include "output/timelines/timeline_text.h"

#include "base/digits.h"
#include "base/time_value.h"

namespace zanvik {

std::string timeline_header(const output_format& format) {
  const std::string& separator = format.csv_separator;
  std::string line = format.pair_datetime ? "date/time" : "date" + separator + "time";
  for (const char* name :
       {"timezone", "MACB", "source", "sourcetype", "type", "user", "host", "short", "desc",
        "version", "filename", "inode", "notes", "format", "extra"}) {
    line += separator + name;
  }
  return line + '\n';
}

std::string timeline_head(const output_format& format) {
  return format.output_bodyfile ? std::string(body_header) : timeline_header(format);
}

std::string inode_text(std::uint64_t value, bool base16) {
  std::string text;
  if (base16) {
    text = "0x";
    append_hex(text, value, 8);
  } else {
    append_decimal(text, value);
  }
  return text;
}

std::int64_t body_seconds(std::uint64_t filetime) {
  if (!is_valid_filetime(filetime)) return 0;
  const auto ticks = static_cast<std::int64_t>(filetime - qx::unix_epoch_filetime);
  const auto per_second = static_cast<std::int64_t>(qx::ticks_per_second);
  return ticks / per_second - (ticks % per_second < 0 ? 1 : 0);
}

std::uint64_t shown_timeline_time(const output_format& format, std::uint64_t filetime) {
  constexpr std::uint64_t ticks_per_millisecond = qx::ticks_per_second / 1000;
  if (!format.output_bodyfile) return filetime / ticks_per_millisecond;
  // The lowest number stands for the earliest second.
  return static_cast<std::uint64_t>(body_seconds(filetime)) ^ (std::uint64_t{1} << 63);
}

}  // namespace zanvik
