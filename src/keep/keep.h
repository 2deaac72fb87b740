// The way into this folder: keeping selected records for the tables.
//
//   keeping_sink.h      the sink that keeps what a log's commands select
//   record_keeper.h     from a decoded record to a kept one, by a plan of its columns
//                       (column_plan.h, plan_cache.h); slot_columns.h and slack_columns.h for
//                       records from slack
//   evt_record_keeper.h the same for legacy records (evt_columns.h)
//
// In: records that a selector passes on. Out: records in the container (events/log_record.h), not
// yet in time order. Nothing here selects, counts, writes a result or prints a message.
#pragma once

#include "keep/keeping_sink.h"
