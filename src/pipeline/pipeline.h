// The way into this folder: much data put in order within little memory. It knows nothing of logs;
// what it orders are keys with bytes behind them.
//
//   sort_key.h         the key
//   external_sorter.h  items in any order in, all in order out; runs go to a temporary file
//   sorted_input.h     items that are in order already, and the merging of many such
//   temporary_file.h   a file without a name
//
// A stage that makes items on several threads hands them on in one order: equal keys come out as
// they came in.
#pragma once

#include "pipeline/external_sorter.h"
