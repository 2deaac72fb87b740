// The way into this folder: which records of a log its commands select.
//
//   evtx_selector.h     the sink that compares .evtx records with a log's commands, by the quick
//                       look-ups of named_values.h and text_search.h (events/evtx_fields.h has the
//                       rule); evt_selector.h does it for legacy records (events/evt_fields.h)
//   event_conditions.h  what the verbs take: event IDs, times, named values, texts of whole events
//   selection_sink.h    where selected records go: keep/ keeps them, stats/ counts them
//
// Nothing here knows what is done with a record.
#pragma once

// IWYU pragma: begin_exports
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
// IWYU pragma: end_exports
