// Events the plain, direct way: the decoded tokens of each record become a small tree of texts, and
// the tree is written. Nothing is kept from one record to the next.
//
// In: a block of an .evtx log, as a walk reads it. Out: for each record the line of JSON and the
// XML that the forms must write. Limits are not tested: it is for logs within them.
#pragma once

#include <string>
#include <vector>

#include "evtx/evtx.h"

namespace zanvik::testing {

class plain_event_reader : public chunk_visitor {
 public:
  explicit plain_event_reader(std::string log) : log_(std::move(log)) {}

  void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                   std::uint64_t file_offset) override;
  bool on_record(std::uint64_t offset) override;
  void on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) override;

  std::string json;  // lines
  std::string xml;   // elements with their instruction, a line each

 private:
  void write(std::uint64_t offset, bool slack);

  std::string log_;
  chunk_view chunk_;
  work_budget budget_;
  bxml_memory memory_;
};

}  // namespace zanvik::testing
