// Binary XML of a template's body, or of a fragment in a record, as an event template.
//
// In: a chunk and the offset of the fragment, with or without its header. Out: the true tree, with
// every token in its place. Damage ends the fragment: what was read is kept, open elements are
// closed, and the template is marked as cut.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "events/event_template.h"
#include "evtx/container/chunk.h"

namespace zanvik {

// Texts of a fragment that become slots, in order.
struct fragment_texts {
  std::string pool;
  std::vector<std::size_t> ends;  // of each, in the pool

  void clear() {
    pool.clear();
    ends.clear();
  }
};

// Reads the fragment at `offset` up to its end-of-stream token, or to `end`, into `out`, whose
// tokens and pool it replaces. `budget` is charged for its bytes, and for names elsewhere. Returns
// false, with nothing in `out`, if there is no element.
//
// With `texts`, for a fragment in a record: its texts go there, and the template has slots in their
// places, so that fragments with other texts have the same template. What names a field stays in
// the template: attributes `Name` outside System, and declarations.
bool compile_fragment(const chunk_view& chunk, std::uint64_t offset, std::uint64_t end,
                      std::int64_t& budget, event_template& out, fragment_texts* texts = nullptr);

}  // namespace zanvik
