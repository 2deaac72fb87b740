// A whole .evtx log of up to three chunks: what is known from one chunk is used for the next.
#include "two_ways.h"

namespace zanvik::fuzz {

ZANVIK_FUZZ_TARGET(evtx) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  require_two_ways_agree(unpacked_log(in.rest(), flags), flags & 1);
}

}  // namespace zanvik::fuzz
