// The way into this folder, which takes a log apart byte by byte and says what is odd about it.
//
//   log_ledger.h      what comes out: facts, the account of bytes and records, chunks, findings
//   evtx_ledger.h     makes it of an .evtx log, block by block; evt_ledger.h of a legacy one
//   carve_ledger.h    the same of bytes that are no log
//   chunk_walk.h      the folder's own walk over one chunk: areas that cover each byte once
//   chunk_settle.h    which of the chunk's records the reader gave, and why not the others
//   chunk_order.h     what chunks say together: gaps, order, copies
//   finding.h         kinds of findings; finding_kinds.cpp says what each may mean
//   checksum.h        CRC-32 and SHA-256, from libraries
//
// The walk here stands on the container's layout alone and shares no code with the readers, so that
// one can be held against the other: what a reader gives is "read", the rest is lost, with a
// reason. Nothing found is a verdict. A finding is a fact with its place and with what it may mean.
#pragma once

#include "inspect/evt_ledger.h"
#include "inspect/evtx_ledger.h"
