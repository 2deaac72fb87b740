// The way into this folder, which turns blocks of an .evtx file into decoded records.
//
//   evtx.h              the walk: blocks, chunks, record headers
//   record_reader.h     one record, by the quick path or the plain one, into record_fields.h
//   quick_records.h     the quick path: template_store.h, and template_bodies.h for later chunks
//   template_record.h   the plain path: slots (slot_table.h), bodies (bxml_decoder.h), and the
//                       definitions of the chunk (template_catalogue.h)
//   bxml_decoder.h      binary XML; bxml_items.cpp makes fields of it, bxml_substitutions.cpp and
//                       system_slots.cpp have what templates add, bxml_tokens.h the layouts
//   value_text.h        typed values as text
//   slack.h             the search for records where none is declared
//   channel_finder.h    the channel of a log of unknown name, from first_record.h
//
// A reader knows no report: each decoded record goes to a sink, and tests, fuzzers and benchmarks
// use sinks too. Damage is silent: a bad chunk, record or field costs that item, and the walk
// continues. No checksum is ever tested.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "evtx/record_reader.h"

namespace zanvik {

class record_sink {
 public:
  virtual ~record_sink() = default;
  // Takes a record; it and everything it points to are valid only during the call.
  virtual void on_record(record_fields& record) = 0;
};

// What a walk calls for the chunks of a block and for their records, which are given only by
// position. Offsets count from the chunk.
class chunk_visitor {
 public:
  virtual ~chunk_visitor() = default;
  // `bytes` is from the chunk's first byte to the end of the block, `bound` the size of the block,
  // `file_offset` the chunk's.
  virtual void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                           std::uint64_t file_offset) = 0;
  // A record with a sound header. Returns whether the walk may search from it.
  virtual bool on_record(std::uint64_t offset) = 0;
  // A candidate in the free tail of the chunk, of which `area_bytes` are searched.
  virtual void on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) = 0;
};

// What a walk calls when it reaches a record, before the record is read.
class walk_progress {
 public:
  virtual ~walk_progress() = default;
  // The number in the record's header, and that of the record read before it; 0 for the first.
  virtual void at_record(std::uint64_t number, std::uint64_t number_before) = 0;
};

// What a walk looks at.
struct walk_settings {
  bool inc_slack = false;             // search behind damage and in free tails too (slack.h)
  walk_progress* progress = nullptr;  // null for nobody
  reader_options reading = {};
  bool inside_records = false;  // search in records too, for others that their sizes hide
};

enum class walk_result {
  nothing,        // an empty block
  not_evtx,       // it starts with neither signature: for the legacy reader
  no_full_chunk,  // it ended before its first full chunk
  walked,         // it ended after its last full chunk
};

// Walks one block: a file header and the chunks after it, or only chunks; `base_offset` is its
// offset in the file. Chunks are found by their position; one with a bad signature is skipped, and
// an invalid record header ends its chunk, unless slack is searched. The block's bytes are changed
// in one case: a record found after damage whose size reaches past its chunk is cut to it, so that
// all later reads see it cut. A block whose first chunk has lost its signature yields nothing,
// although later chunks in it may be sound; that is meant.
walk_result walk_evtx_block(std::span<std::byte> block, std::uint64_t base_offset,
                            record_reader& reader, record_sink& sink,
                            const walk_settings& settings);

// The same walk for a reader of another kind.
walk_result walk_evtx_block(std::span<std::byte> block, std::uint64_t base_offset,
                            chunk_visitor& visitor, const walk_settings& settings);

}  // namespace zanvik
