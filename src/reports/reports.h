// The way into this folder: which records of a log are wanted, and what is kept of them.
//
//   report_command.h    one selection; command_*.h make them from report lines and command files
//   builtin_reports.h   the seven built-in reports: their lines (builtin_lines.h) and gates
//   evtx_selector.h     the sink that tries .evtx records against a log's commands; evtx_fields.h
//                       has the plain rules, named_values.h and text_search.h the quick ones
//   evt_selector.h      the same for legacy records
//   log_record.h        a kept record, and the container of a run's records (value_block.h)
//   record_keeper.h     from a decoded record to a kept one, by a plan of its columns
//   translated_slots.h  raw disk bytes in events made readable (disk_*.h)
//   log_statistics.h    the counters of a log and their table
//
// In: the readers' decoded records. Out: records in the container, time order still to be made.
// Nothing here reads a log, writes a result or prints a message.
#pragma once

// IWYU pragma: begin_exports
#include "reports/builtin_reports.h"
#include "reports/command_build.h"
#include "reports/evt_selector.h"
#include "reports/evtx_selector.h"
#include "reports/log_record.h"
#include "reports/log_statistics.h"
#include "reports/report_command.h"
// IWYU pragma: end_exports
