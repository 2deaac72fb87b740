// One 64 KiB chunk of an .evtx log: records one after the other, then header, tables and CRCs.
//
// In: record_builder values, each the number, time and content of a record. Out: 65,536 bytes in
// which everything that a reader may check is right, unless the test overrides it. Records that do
// not fit stop the program with std::logic_error.
#pragma once

#include <initializer_list>
#include <optional>
#include <vector>

#include "bxml_builder.h"

namespace zanvik::testing {

inline constexpr std::size_t chunk_bytes = 65536;

// A record to be written: the head's fields, and the function that writes its binary XML when its
// place is known.
struct record_builder {
  std::uint64_t number = 0;
  std::uint64_t filetime = 0;
  bxml_writer content{};
  std::optional<std::uint32_t>
      declared_size{};  // put into both size fields instead of the true size
};

// A record with a template instance.
record_builder template_record(std::uint64_t number, std::uint64_t filetime,
                               template_definition definition, std::vector<slot_value> slots);
// A record of plain binary XML; `content` also writes the fragment header, if there is one.
record_builder plain_record(std::uint64_t number, std::uint64_t filetime, bxml_writer content);
// A record whose content is just these bytes.
record_builder raw_record(std::uint64_t number, std::uint64_t filetime, byte_vector content);

class chunk_builder {
 public:
  chunk_builder() = default;
  chunk_builder(std::initializer_list<record_builder> records) : records_(records) {}
  explicit chunk_builder(std::vector<record_builder> records) : records_(std::move(records)) {}

  chunk_builder& add(record_builder record);
  // A record after the last declared one: in the free space, as in a reused chunk.
  chunk_builder& slack(record_builder record);
  // Raw bytes at the start of the free space, after the slack records.
  chunk_builder& free_tail(byte_vector bytes);
  // The logical numbers in the header, instead of those of the first and the last record.
  chunk_builder& declare(std::uint64_t first, std::uint64_t last);

  struct built {
    byte_vector bytes;                        // 65,536
    std::vector<std::size_t> record_offsets;  // declared records, then slack records
    std::uint64_t next_number = 1;            // one past the last declared number
  };
  built build() const;

 private:
  void write_header(byte_vector& chunk, const chunk_tables& tables, std::size_t last_record,
                    std::size_t free_space) const;

  std::vector<record_builder> records_;
  std::vector<record_builder> slack_;
  byte_vector tail_;
  std::optional<std::pair<std::uint64_t, std::uint64_t>> declared_;
};

}  // namespace zanvik::testing
