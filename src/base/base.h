// The way into this folder: what every other one stands on, and nothing about logs.
//
//   byte_cursor.h       bytes of an untrusted file; the only bounds check
//   limits.h            what keeps work and memory in proportion, each with its reason
//   tight_buffers.h     for fuzzing: buffers without room to spare
//   strings.h         text, numbers, paths, UTF-16: the umbrella that lists their qx_*.h;
//                       utf16_write.h for records, hash_mix.h for hashes
//   strings.h         text, numbers, paths, UTF-16 (the umbrella of these qx_*.h); hash_mix.h
//   time_value.h           instants; time_parse.h and time_format.h, time_writer.h for records
//   fileio.h            files (blocks of them in block_memory.h); fileio_output.h the results
//                       stream, stdin_stream.h a list of names
//   dir_walk.h          folders; file_filter.h and file_match.h which of their files are wanted
//   console.h           messages and the status line; diag.h the trace
//   argument_list.h     options by their names
//   cmd_params.h        the options that all runs share: output_format.h (taken by
//                       output_options.h, csv_separator.h) and walk_options.h are its parts
//   selection_options.h which records are wanted
//   cmdline_ctx.h       the end of a run
//
// Text and value helpers bear the prefix qx, after their namespace. Nothing here throws of its own.
// Messages go through console.h; only diag.h and cmdline_ctx.h write anything besides.
#pragma once

// IWYU pragma: begin_exports
#include "base/byte_cursor.h"
#include "base/console.h"
#include "base/fileio.h"
#include "base/limits.h"
#include "base/strings.h"
#include "base/time_value.h"
#include "options/cmd_params.h"
// IWYU pragma: end_exports
