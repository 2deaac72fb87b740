#include "inspect/given_reader.h"

#include <algorithm>
#include <iterator>

#include "evtx/container/chunk.h"
#include "source/log_events.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

}  // namespace

given_reader::given_reader(const log_source& source, event_sink& events)
    : sink_(events), reader_(sink_) {
  reader_.set_source(source);
}

void given_reader::noting_sink::on_event(const event_view& event) {
  const event_header& header = event.header();
  // A size may lead the reader into the next chunk: the event belongs to the one it was read from.
  const std::uint64_t chunk = std::min<std::uint64_t>(
      (header.file_offset - block_offset) / layout::chunk_bytes, given.size() - 1);
  const std::uint64_t chunk_offset = block_offset + chunk * layout::chunk_bytes;
  given_records& to = given[static_cast<std::size_t>(chunk)];
  (slack ? to.slack : to.plain)
      .push_back({header.file_offset - chunk_offset, (header.flags & event_no_template) != 0,
                  (header.flags & event_cut) != 0});
  if (!slack) events_.on_event(event);
}

void given_reader::walk(std::span<std::byte> chunks, std::uint64_t offset, bool slack) {
  sink_.slack = slack;
  walk_settings settings;
  settings.inc_slack = slack;
  settings.inside_records = slack;
  (void)walk_evtx_block(chunks, offset, reader_, settings);
}

std::span<const given_records> given_reader::read(std::span<std::byte> block,
                                                  std::uint64_t offset) {
  sink_.given.assign(block.size() / layout::chunk_bytes, {});
  sink_.block_offset = offset;
  const auto skip = static_cast<std::size_t>(first_chunk(block));
  if (skip == block.size()) return sink_.given;
  walk(block.subspan(skip), offset + skip, false);
  walk(block.subspan(skip), offset + skip, true);
  for (given_records& chunk : sink_.given) {
    std::stable_sort(chunk.plain.begin(), chunk.plain.end());
    std::stable_sort(chunk.slack.begin(), chunk.slack.end());
    std::vector<given_record> rest;
    std::set_difference(chunk.slack.begin(), chunk.slack.end(), chunk.plain.begin(),
                        chunk.plain.end(), std::back_inserter(rest));
    chunk.slack = std::move(rest);
  }
  return sink_.given;
}

}  // namespace zanvik
