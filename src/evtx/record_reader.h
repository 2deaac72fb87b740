// From a record's header and binary XML to `record_fields`: records with a template by the quick
// path or the plain one, records without by the token decoder.
//
// A run has one reader. For each chunk it keeps the chunk's work budget; knowledge about templates
// is in its `template_store`. The record that it returns is valid until the next one is read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "base/time_formats.h"
#include "evtx/record_fields.h"
#include "evtx/templates/quick_records.h"

namespace zanvik {

// Options of a reader, off by default.
struct reader_options {
  // A record's time is its own TimeCreated if it has a valid one. By default it is the time in the
  // record's header, which exports leave empty in the last record; only a record without templates
  // uses its own.
  bool event_time = false;
  // SIDs of any length have a text. By default those with two or more sub-authorities are empty.
  bool full_sids = false;
};

class record_reader {
 public:
  // `formats` gives the form of a collector's time in records without a template; it must outlive
  // the reader. `quick` false decodes the templates again for every record: the reference for
  // tests.
  explicit record_reader(const time_formats& formats, bool quick = true)
      : formats_(formats), quick_(quick), quick_records_(store_) {}
  record_reader(const record_reader&) = delete;
  record_reader& operator=(const record_reader&) = delete;

  // Starts a chunk: `bytes` is from its first byte to the end of the block, `bound` the size of the
  // block, `file_offset` the chunk's.
  void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                   std::uint64_t file_offset);
  const chunk_view& chunk() const { return chunk_; }

  // Reads the record at chunk offset `offset`, whose header exists. Null if nothing in it is
  // usable.
  record_fields* read(std::uint64_t offset);
  // The same for a candidate in the free tail of the chunk, of which `area_bytes` are searched.
  record_fields* read_slack(std::uint64_t offset, std::uint64_t area_bytes);
  // Takes effect with the next chunk.
  void set_options(const reader_options& options) { options_ = options; }
  // Records say whether slack is searched, and whether a candidate was tried before them.
  void set_slack_state(bool slack_search, bool after_slack) {
    record_.slack_search = slack_search;
    record_.after_slack = after_slack;
  }

 private:
  void read_header(std::uint64_t offset);
  bool read_template(std::uint64_t bxml, const instance_head& head);
  void take_quick_record();
  bool decode_template_record(std::uint64_t bxml, const instance_head& head, work_budget& budget);
  bool read_plain(std::uint64_t bxml, std::uint64_t limit);
  void find_event_id();
  void use_own_time();
  void add_collector_time(field_map& fields) const;

  const time_formats& formats_;
  bool quick_;
  reader_options options_;
  chunk_view chunk_;
  work_budget budget_;
  bxml_memory memory_;
  template_store store_;
  quick_records quick_records_;
  record_fields record_;
  record_layout own_layout_;  // of a record without templates
  std::vector<record_slot> slots_;
  std::string scratch_;
  // Of the fields of one record without templates.
  std::array<std::byte, 32768> field_memory_;
  std::pmr::monotonic_buffer_resource field_pool_{field_memory_.data(), field_memory_.size()};
};

}  // namespace zanvik
