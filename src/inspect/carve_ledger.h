// The ledger of bytes that are no log: what carving finds in them, and that each byte has its line.
//
// In: the bytes, as the carver takes them. Out: a log_ledger whose chunks are the whole ones that
// were found, wherever they are from: nothing is said of their order or of gaps between them.
#pragma once

#include "inspect/log_ledger.h"
#include "source/found_log.h"

namespace zanvik {

// Fills `out`, whose path and size are set, from bytes that are to be carved.
void inspect_carved(const found_log& log, log_ledger& out);

}  // namespace zanvik
