// The way into this folder, which accounts for every byte of a log and says what is odd about it.
//
//   log_ledger.h      what comes out: facts, the account of bytes and records, chunks, findings
//   evtx_ledger.h     makes it of an .evtx log, block by block; evt_ledger.h of a legacy one
//   carve_ledger.h    the same of bytes that are no log
//   chunk_walk.h      the folder's own walk over one chunk: areas that cover each byte once
//   chunk_settle.h    which of the chunk's records the reader returned, and why not the others
//   chunk_findings.h  what is odd inside one chunk; event_facts.h what its events tell
//   chunk_order.h     what chunks say together: gaps, order, copies
//   given_reader.h    which records the reader of `export` returns; finding_runs.h joins findings
//   finding.h         kinds of findings; finding_kinds.cpp says what each may mean
//   checksum.h        SHA-256, from a library
//
// The walk here depends only on the container's layout and shares no code with the readers, so each
// checks the other: what a reader returns is "read", the rest is lost, with a reason. Nothing found
// is a verdict. A finding is a fact with its place and its possible meanings.
#pragma once

#include "inspect/evt_ledger.h"
#include "inspect/evtx_ledger.h"
