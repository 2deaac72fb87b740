// The way into this folder: work on several threads with results in one order, and sorting much
// data in little memory. It knows nothing of logs; it sorts keys with bytes after them.
//
//   ordered_work.h     jobs on several threads, their results in the order of the jobs
//   processors.h       how many threads are of use
//   sort_key.h         the key
//   external_sorter.h  items in any order in, all in order out; runs go to a temporary file
//   sorted_input.h     items that are in order already, and merging many such inputs
//   temporary_file.h   a file without a name
//
// A stage that makes items on several threads passes them on in one order: equal keys leave in the
// order of arrival.
#pragma once

#include "pipeline/external_sorter.h"
