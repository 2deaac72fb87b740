#include "output/timelines/one_timeline.h"

#include "output/timelines/timeline_text.h"
#include "output/timelines/timeline_writer.h"

namespace zanvik {

void timeline_part::add(std::span<const LogRecord* const> records, const output_format& format,
                      const write_context& context) {
  any_ = any_ || !records.empty();
  render_timeline(records, format, context, [this](const LogRecord& record, std::string_view text) {
    lines_.push_back({record.time, text.size()});
    text_ += text;
  });
}

void timeline_part::clear() {
  lines_.clear();
  text_.clear();
  any_ = false;
}

void one_timeline::add(std::span<const LogRecord* const> records, const write_context& context) {
  any_ = any_ || !records.empty();
  render_timeline(records, format_, context, [this](const LogRecord& record, std::string_view line) {
    add_line(record.time, line);
  });
}

void one_timeline::add(const timeline_part& lines) {
  any_ = any_ || lines.any_;
  std::string_view rest = lines.text_;
  for (const timeline_part::line& line : lines.lines_) {
    if (line.size == timeline_part::starts_log) {
      start_log();
      continue;
    }
    add_line(line.filetime, rest.substr(0, line.size));
    rest.remove_prefix(line.size);
  }
}

void one_timeline::add_line(std::uint64_t filetime, std::string_view line) {
  const std::uint64_t shown = by_time_ ? shown_timeline_time(format_, filetime) : 0;
  (void)sorter_.add({{shown, log_, filetime}}, line);  // it keeps its error
}

bool one_timeline::finish(const std::function<bool(std::string_view)>& write) {
  return write(timeline_head(format_)) &&
         sorter_.finish([&](const sort_key&, std::string_view line) { return write(line); });
}

}  // namespace zanvik
