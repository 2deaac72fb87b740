// The way into this folder: which records of a log its commands want.
//
//   evtx_selector.h     the sink that tries .evtx records against a log's commands, by the quick
//                       look-ups of named_values.h and text_search.h (events/evtx_fields.h has the
//                       rule); evt_selector.h the same for legacy records (events/evt_fields.h)
//   selection_sink.h    what selected records go to: keep/ keeps them, stats/ counts them
//
// Nothing here knows what becomes of a record.
#pragma once

// IWYU pragma: begin_exports
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
// IWYU pragma: end_exports
