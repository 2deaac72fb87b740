// The time that a record itself gives as its TimeCreated.
//
// In: a record with its layout and slots. Out: a FILETIME, or 0 if the record has no TimeCreated,
// or an invalid one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "evtx/record_fields.h"

namespace zanvik {

// The slot that has it, -1 if none does.
std::ptrdiff_t find_time_slot(const record_layout& layout);

std::uint64_t time_created(const record_fields& record);

}  // namespace zanvik
