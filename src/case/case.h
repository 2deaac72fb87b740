// The way into this folder, which keeps a case: logs and their events in one SQLite database, to be
// asked in SQL.
//
//   case_file.h     the database of a case: making, opening and refusing it
//   case_rows.h     rows, log by log: each log in one transaction; case_writer.h makes them of
//   events case_schema.h   its tables; question_views.h the views, made from src/questions
//   event_data.h    an event's data as JSON; clean_text.h texts; lookup_table.h shared texts
//   database.h      the library
//
// In: logs with their ledgers, and event views. Out: a database of whole logs, sound however the
// run ends. Values are bound, never part of SQL.
#pragma once

#include "case/case_file.h"
#include "case/case_merge.h"
#include "case/case_writer.h"
