// The way into this folder: results of several runs, each in one order of time, become one.
//
//   result_form.h   the forms: how a result is cut into items, and which time an item shows
//   result_input.h  the items of a file
//
// In: files that `zanvik export --order time` and `hunt` wrote. Out: what one run over all their
// logs would have written, if the files are given in the order of the logs: items that show the
// same time are in the order of the files, those of one file in its own.
#pragma once

#include "merge/result_form.h"
#include "merge/result_input.h"
