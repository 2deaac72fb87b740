// The ledger of one log, in one pass over its bytes.
#pragma once

#include "inspect/log_ledger.h"
#include "source/found_log.h"

namespace zanvik {

// Fills `out` from a log. An .evtx log is read block by block, a legacy one as a whole, which takes
// up to 4 GiB of memory. Bytes that cannot be read are a line of the account.
void inspect_log(const found_log& log, log_ledger& out);

}  // namespace zanvik
