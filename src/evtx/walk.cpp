#include <algorithm>

#include "evtx/evtx.h"
#include "support/console.h"
#include "support/qx_text.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

constexpr std::uint64_t no_records = ~std::uint64_t{0};

// The log's name as the status line shows it.
std::string short_log_name(std::string_view path) {
  constexpr std::size_t longest = 15;
  std::string name(path);
  replace_char(name, '%', ' ', false);
  if (name.size() > longest) name = name.substr(0, longest) + "..";
  return name;
}

// The walk over one block.
class block_walk {
 public:
  block_walk(std::span<const std::byte> block, std::uint64_t base_offset, record_reader& reader,
             record_sink& sink, const walk_progress& progress)
      : block_(block, base_offset),
        base_(base_offset),
        reader_(reader),
        sink_(sink),
        progress_(progress),
        short_name_(short_log_name(progress.log_path)) {}

  void walk_chunk(std::uint64_t position) {
    reader_.start_chunk(block_.bytes().subspan(static_cast<std::size_t>(position)), block_.size(),
                        base_ + position);
    if (reader_.chunk().bytes.at<std::uint64_t>(layout::last_record_at) != no_records) {
      walk_records(position);
    }
  }

 private:
  void walk_records(std::uint64_t chunk) {
    const byte_cursor& bytes = reader_.chunk().bytes;
    std::uint64_t counter = bytes.at_or_zero<std::uint64_t>(layout::first_logical_record_at);
    const auto last = bytes.at_or_zero<std::uint64_t>(layout::nth_logical_record_at);
    std::uint64_t record = chunk + layout::chunk_header_bytes;
    // Nothing but the block's end and the counter stops a record size that leaves the chunk.
    const std::uint64_t end =
        std::min<std::uint64_t>(block_.size(), chunk + limits::record_walk_bytes);
    for (; counter <= last && record <= end; ++counter) {
      tell_progress(record);
      if (!is_record_header(block_, record)) return;
      number_before_ = block_.at_or_zero<std::uint64_t>(record + 8);
      if (record_fields* fields = reader_.read(record - chunk)) sink_.on_record(*fields);
      record += block_.at_or_zero<std::uint32_t>(record + 4);
      if (counter == no_records) return;  // it would wrap
    }
  }

  void tell_progress(std::uint64_t record) {
    if (progress_.trace && progress_.trace->diags_on && progress_.trace->diag_level >= 2) {
      diag_line(*progress_.trace, "%s: %lld", progress_.log_path.c_str(),
                static_cast<long long>(block_.at_or_zero<std::uint64_t>(record + 8)));
    }
    if (!progress_.show_status) return;
    constexpr std::uint64_t every = 17;
    if (shown_++ % every != 0) return;
    // Of the record before: the one in hand is not looked at yet.
    print_status(70, "%s: %lld", short_name_.c_str(), static_cast<long long>(number_before_));
  }

  byte_cursor block_;
  std::uint64_t base_;
  record_reader& reader_;
  record_sink& sink_;
  const walk_progress& progress_;
  std::string short_name_;
  std::uint64_t shown_ = 0;
  std::uint64_t number_before_ = 0;
};

}  // namespace

bool is_record_header(const byte_cursor& block, std::uint64_t offset) {
  if (!block.has(offset, layout::record_header_bytes)) return false;
  if (block.at<std::uint32_t>(offset) != layout::record_signature) return false;
  const auto size = block.at_or_zero<std::uint32_t>(offset + 4);
  return size >= layout::record_size_min && size <= layout::record_size_max;
}

walk_result walk_evtx_block(std::span<const std::byte> block, std::uint64_t base_offset,
                            record_reader& reader, record_sink& sink,
                            const walk_progress& progress) {
  if (block.empty()) return walk_result::nothing;
  const byte_cursor bytes(block);
  const auto signature = bytes.at<std::uint64_t>(0);
  if (signature != layout::file_signature && signature != layout::chunk_signature) {
    return walk_result::not_evtx;
  }
  std::uint64_t chunk = signature == layout::file_signature ? layout::file_header_bytes : 0;
  if (!bytes.has(chunk, layout::chunk_bytes)) return walk_result::no_full_chunk;
  block_walk walk(block, base_offset, reader, sink, progress);
  for (; bytes.has(chunk, layout::chunk_bytes); chunk += layout::chunk_bytes) {
    if (bytes.at<std::uint64_t>(chunk) == layout::chunk_signature) walk.walk_chunk(chunk);
  }
  return walk_result::walked;
}

}  // namespace zanvik
