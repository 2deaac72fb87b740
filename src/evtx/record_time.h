// The time that a record itself gives as its TimeCreated.
//
// In: a record whose layout and slots are filled. Out: a FILETIME, or 0 when the record has no
// TimeCreated, or one that is no valid time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "evtx/record_fields.h"

namespace zanvik {

// The slot that holds it, -1 when none does.
std::ptrdiff_t find_time_slot(const record_layout& layout);

std::uint64_t time_created(const record_fields& record);

}  // namespace zanvik
