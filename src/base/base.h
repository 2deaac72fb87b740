// The way into this folder: everything that the other folders use, and nothing about logs.
//
//   byte_cursor.h    bytes of an untrusted file; the only bounds check
//   limits.h         limits of work and memory, each with its reason
//   tight_buffers.h  for fuzzing: buffers without spare room
//   strings.h        text, numbers, paths, UTF-16; utf16_write.h is the fast conversion
//   hash_mix.h       hashes with the secret of the run
//   time_value.h     instants; time_parse.h reads them, time_format.h and time_writer.h write them
//   fileio.h         files (blocks of them in block_memory.h); fileio_output.h is the results
//                    stream, stdin_stream.h a list of names, file_filter.h which names are wanted
//   console.h        messages and the status line; diag.h the trace
//
// Nothing here throws on its own. Messages go through console.h.
#pragma once

// IWYU pragma: begin_exports
#include "base/byte_cursor.h"
#include "base/console.h"
#include "base/fileio.h"
#include "base/limits.h"
#include "base/strings.h"
#include "base/time_value.h"
// IWYU pragma: end_exports
