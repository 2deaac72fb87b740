// The quick path and the plain path of the record readers over the same bytes.
#pragma once

#include <string>

#include "../tests/evtx/read_back.h"
#include "fuzz_target.h"

namespace zanvik::fuzz {

// Everything that a sink sees of the log's records, as text. The walk may change `log`.
inline std::string walked_text(std::span<std::byte> log, record_reader& reader, bool inc_slack) {
  walk_settings settings;
  settings.inc_slack = inc_slack;
  testing::keeping_sink sink;
  walk_evtx_block(log, 0, reader, sink, settings);
  std::string text;
  for (const testing::read_record& record : sink.records) text += record.all;
  return text;
}

// Walks the log by both paths, by the quick one twice, so that everything is known the second time.
inline void require_two_ways_agree(std::span<const std::byte> log, bool inc_slack) {
  const time_formats format;
  record_reader plain(format, false);
  record_reader quick(format);
  exact_bytes bytes(log);
  const std::string expected = walked_text(bytes.span(), plain, inc_slack);
  for (int round = 0; round < 2; ++round) {
    exact_bytes again(log);
    require_equal(walked_text(again.span(), quick, inc_slack), expected, "quick and plain agree");
  }
}

}  // namespace zanvik::fuzz
