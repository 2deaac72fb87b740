// The way into this folder: which records of a log are wanted, and what is kept of them.
//
//   report_command.h    one selection; command_build.h makes them from report lines and command
//                       files, which command_list.h cuts up; command_translate.h is `-translate`
//   builtin_reports.h   the seven built-in reports: their lines (builtin_lines.h) and gates
//   evtx_selector.h     the sink that tries .evtx records against a log's commands; evtx_fields.h
//                       has the plain rules, named_values.h and text_search.h the quick ones
//   evt_selector.h      the same for legacy records (evt_fields.h)
//   log_record.h        a kept record, and the container of a run's records (record_arena.h,
//                       value_block.h)
//   record_keeper.h     from a decoded record to a kept one, by a plan of its columns
//                       (column_plan.h, plan_cache.h); evt_record_keeper.h and evt_columns.h for
//                       legacy records, slot_columns.h and slack_columns.h for those from slack
//   translated_slots.h  raw disk bytes in events made readable: disk_text.h, from the partitions
//                       that disk_layout.h finds and disk_boot_sector.h and disk_types.h describe
//   log_statistics.h    the counters of a log and their table
//
// In: the readers' decoded records. Out: records in the container, time order still to be made.
// Nothing here reads a log, writes a result or prints a message.
#pragma once

// IWYU pragma: begin_exports
#include "commands/builtin_reports.h"
#include "commands/command_build.h"
#include "commands/report_command.h"
#include "events/log_record.h"
#include "select/evt_selector.h"
#include "select/evtx_selector.h"
#include "stats/log_statistics.h"
// IWYU pragma: end_exports
