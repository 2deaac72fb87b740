// Whole events: any bytes as a log, through all forms, each with a strict parser behind it. A log
// reads the same a second time, when its templates and shapes are known; a legacy log reads the
// same in parts as in one piece.
#include "evt/part_walk.h"
#include "exported_events.h"
#include "fuzz_target.h"
#include "reference/strict_parsers.h"

namespace zanvik::fuzz {
namespace {

constexpr std::uint8_t legacy = 0x80;
constexpr std::size_t csv_cells = 13;

std::string evtx_events(std::span<const std::byte> log, std::string_view form, bool slack,
                        unsigned rounds) {
  testing::writing_sink sink(form);
  evtx_event_reader reader(sink);
  reader.set_source(sink.source());
  walk_settings settings;
  settings.inc_slack = slack;
  for (unsigned round = 0; round < rounds; ++round) {
    exact_bytes bytes(log);
    walk_evtx_block(bytes.span(), 0, reader, settings);
  }
  return sink.take();
}

// In parts of `part_bytes`, or in one piece by the plain walk where that is 0.
std::string evt_events(std::span<const std::byte> log, std::string_view form,
                       std::size_t part_bytes) {
  testing::writing_sink sink(form);
  evt_event_reader reader(sink);
  reader.set_source(sink.source());
  if (part_bytes == 0) {
    const exact_bytes bytes(log);
    reader.set_buffer(0, bytes.span().data() + bytes.span().size());
    (void)walk_evt_log(bytes.span(), reader);
    return sink.take();
  }
  evt_part_walk walk(reader, log.size());
  for (std::size_t end = 0;;) {
    end = std::min(log.size(), end + part_bytes);
    const std::size_t begin = std::min<std::size_t>(walk.position(), end);
    const exact_bytes part(log.subspan(begin, end - begin));
    reader.set_buffer(begin, part.span().data() + part.span().size());
    walk.walk(part.span(), begin, end == log.size());
    if (end == log.size()) return sink.take();
  }
}

void require_no_fault(const std::string& fault, std::string_view form) {
  require(fault.empty(), std::string(form) + ": " + fault);
}

template <typename F>
void require_good_forms(F&& events) {
  for (const std::string_view form : {"jsonl", "timesketch", "elastic"}) {
    require_no_fault(testing::fault_in_json_lines(events(form)), form);
  }
  require_no_fault(testing::fault_in_xml(events("xml")), "xml");
  require_no_fault(testing::fault_in_csv(events("csv"), csv_cells), "csv");
}

}  // namespace

ZANVIK_FUZZ_TARGET(forms) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  if (flags & legacy) {
    const std::size_t part_bytes = 1 + 16 * std::size_t{in.take<std::uint8_t>()};
    require_good_forms([&](std::string_view form) { return evt_events(in.rest(), form, 0); });
    require_equal(evt_events(in.rest(), "jsonl", part_bytes), evt_events(in.rest(), "jsonl", 0),
                  "a log in parts and in one piece");
    return;
  }
  const auto log = unpacked_log(in.rest(), flags);
  const bool slack = flags & 1;
  require_good_forms([&](std::string_view form) { return evtx_events(log, form, slack, 1); });
  const std::string once = evtx_events(log, "jsonl", slack, 1);
  require_equal(evtx_events(log, "jsonl", slack, 2), once + once, "a log read a second time");
}

}  // namespace zanvik::fuzz
