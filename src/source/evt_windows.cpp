#include "source/evt_windows.h"

#include <algorithm>
#include <vector>

#include "base/byte_cursor.h"
#include "evt/part_walk.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

constexpr std::size_t block_bytes = 1 << 20;
constexpr std::uint32_t open_flag = 1;

// Counts the records whose numbers the header declares, and passes all on.
class declared_records : public evt_sink {
 public:
  explicit declared_records(evt_sink& sink) : sink_(sink) {}

  void read_header(std::span<const std::byte> log) {
    const byte_cursor bytes(log);
    const bool open = (bytes.at_or_zero<std::uint32_t>(36) & open_flag) != 0;  // header is stale
    if (!open) next_ = bytes.at_or_zero<std::uint32_t>(24);
    oldest_ = bytes.at_or_zero<std::uint32_t>(28);
    has_header_ = true;
  }
  bool has_header() const { return has_header_; }

  void on_record(const evt_record& record) override {
    if (record.record_num >= oldest_ && record.record_num < next_) ++found_;
    sink_.on_record(record);
  }
  // Declared numbers that no record has. What a log of that size cannot hold is none.
  std::uint64_t missing(std::uint64_t log_bytes) const {
    if (next_ <= oldest_) return 0;
    const std::uint64_t declared = next_ - oldest_;
    if (declared > log_bytes / evt_layout::record_head_bytes) return 0;
    return declared - std::min(declared, found_);
  }

 private:
  evt_sink& sink_;
  bool has_header_ = false;
  std::uint64_t oldest_ = 0, next_ = 0, found_ = 0;
};

}  // namespace

log_losses walk_evt_windows(const found_log& log, evt_sink& sink, const evt_window_use& on_window) {
  declared_records records(sink);
  evt_part_walk walk(records, log.is_stream ? 0 : log.size);
  std::vector<std::byte> window;  // from the record in hand to the end of what is read
  std::uint64_t begin = 0;
  const auto walk_window = [&](bool last) {
    if (!records.has_header()) records.read_header(window);
    on_window(window, begin);
    walk.walk(window, begin, last);
    const std::uint64_t used = std::min<std::uint64_t>(walk.position() - begin, window.size());
    window.erase(window.begin(), window.begin() + static_cast<std::ptrdiff_t>(used));
    begin += used;
  };
  log_losses lost;
  lost.has_chunk = true;
  lost.unread =
      !read_blocks(log, 0, block_bytes, [&](std::span<std::byte> block, std::uint64_t offset) {
        while (begin + window.size() < offset) {  // a hole of the file: zeros
          const std::uint64_t hole = offset - begin - window.size();
          window.resize(window.size() + std::min<std::uint64_t>(hole, block_bytes));
          walk_window(false);
        }
        window.insert(window.end(), block.begin(), block.end());
        walk_window(false);
      });
  const std::uint64_t log_bytes = begin + window.size();
  walk_window(true);
  lost.records = std::max(walk.lost(), records.missing(log_bytes));
  return lost;
}

}  // namespace zanvik
