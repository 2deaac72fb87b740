// One chunk, the text of its first record, and the channel in it.
#include "evtx/channel_finder.h"
#include "evtx/first_record.h"
#include "two_ways.h"

namespace zanvik::fuzz {

ZANVIK_FUZZ_TARGET(chunk) {
  input in(bytes);
  const bool inc_slack = in.take<std::uint8_t>() & 1;
  exact_bytes chunk(in.take_bytes(evtx_layout::chunk_bytes), evtx_layout::chunk_bytes);
  std::memcpy(chunk.span().data(), &evtx_layout::chunk_signature, 8);
  require_two_ways_agree(chunk.span(), inc_slack);
  const auto text = first_record_text(chunk.span());
  require(!text || text->size() <= 16u << 20, "the text is in proportion to the chunk");
  const found_channel expected = channel_in_text(text.value_or(""));
  channel_finder finder;
  for (int round = 0; round < 2; ++round) {
    const found_channel found = finder.find(chunk.span());
    require(found.closed == expected.closed, "the channel is closed or not");
    require_equal(found.text.value_or("(none)"), expected.text.value_or("(none)"), "the channel");
  }
}

}  // namespace zanvik::fuzz
