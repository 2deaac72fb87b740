// The way into this folder: what every other one stands on, and nothing about logs.
//
//   byte_cursor.h    bytes of an untrusted file; the only bounds check
//   limits.h         what keeps work and memory in proportion, each with its reason
//   tight_buffers.h  for fuzzing: buffers without room to spare
//   strings.h        text, numbers, paths, UTF-16; utf16_write.h is the fast conversion
//   hash_mix.h       hashes with the run's secret
//   time_value.h     instants; time_parse.h reads them, time_format.h and time_writer.h write them
//   fileio.h         files (blocks of them in block_memory.h); fileio_output.h is the results
//                    stream, stdin_stream.h a list of names, file_filter.h which names are wanted
//   console.h        messages and the status line; diag.h the trace
//
// Nothing here throws of its own. Messages go through console.h.
#pragma once

// IWYU pragma: begin_exports
#include "base/byte_cursor.h"
#include "base/console.h"
#include "base/fileio.h"
#include "base/limits.h"
#include "base/strings.h"
#include "base/time_value.h"
// IWYU pragma: end_exports
