#include "output/timelines/one_timeline.h"

#include "output/timelines/timeline_text.h"
#include "output/timelines/timeline_writer.h"

namespace zanvik {

void one_timeline::add(std::span<const LogRecord* const> records, const write_context& context) {
  any_ = any_ || !records.empty();
  render_timeline(records, format_, context, [&](const LogRecord& record, std::string_view line) {
    const std::uint64_t shown = by_time_ ? shown_timeline_time(format_, record.time) : 0;
    (void)sorter_.add({{shown, log_, record.time}}, line);  // it keeps its error
  });
}

bool one_timeline::finish(const std::function<bool(std::string_view)>& write) {
  return write(timeline_head(format_)) &&
         sorter_.finish([&](const sort_key&, std::string_view line) { return write(line); });
}

}  // namespace zanvik
