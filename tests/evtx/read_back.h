// Reads logs back through the walk and keeps what a sink can see of each record.
//
// In: the bytes of a log, copied to a heap buffer of exactly their size, so that a read past their
// end is noticed. Out: one `read_record` for each record that reached the sink.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "evtx/evtx.h"
#include "log_builder.h"

namespace zanvik::testing {

struct read_record {
  std::uint64_t number = 0;
  std::uint32_t event_id = 0;
  bool plain = false;
  std::vector<std::string> slots;  // "name=text", "03:name=text" for a nested value
  std::map<std::string, std::string> fields;
  std::string all;  // everything about it, for comparisons
};

// Bytes in memory of their exact size.
class exact_buffer {
 public:
  explicit exact_buffer(std::span<const std::byte> bytes)
      : size_(bytes.size()), bytes_(std::make_unique<std::byte[]>(bytes.size())) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
  }
  std::span<std::byte> span() { return {bytes_.get(), size_}; }

 private:
  std::size_t size_;
  std::unique_ptr<std::byte[]> bytes_;
};

class keeping_sink : public record_sink {
 public:
  void on_record(record_fields& record) override {
    read_record kept{record.number, record.event_id, record.plain, {}, {}, {}};
    kept.all = std::to_string(record.number) + " id " + std::to_string(record.event_id) + " time " +
               std::to_string(record.time) + " at " + std::to_string(record.file_offset) +
               (record.plain ? " plain" : "") + "\n";
    for (std::size_t i = 0; i < record.slots.size(); ++i) {
      const record_slot& slot = record.slots[i];
      std::string line;
      if (slot.child != 0) {
        line += slot.child < 10 ? "0" : "";
        line += std::to_string(slot.child) + ":";
      }
      line += record.slot_name(i) + "=";
      append_slot_text(line, record, i);
      kept.all += line + " @" + std::to_string(slot.offset) + " " + std::to_string(slot.type) +
                  " " + std::to_string(slot.flags);
      // The length of nested binary XML is shown nowhere; the two paths count it differently.
      if (slot.type != value_type::bxml) kept.all += " " + std::to_string(slot.size);
      kept.all += "\n";
      kept.slots.push_back(std::move(line));
    }
    for (const layout_field& field : record.layout->fields) {
      kept.all += field.name + ":" + field.text + " " + std::to_string(field.type) + "\n";
      kept.fields.emplace(field.name, field.text);
    }
    records.push_back(std::move(kept));
  }

  std::vector<read_record> records;
};

// The records of one block, walked as a whole.
inline std::vector<read_record> walk(std::span<const std::byte> bytes, bool quick = true,
                                     std::uint64_t base_offset = 0) {
  exact_buffer block(bytes);
  const time_formats format;
  record_reader reader(format, quick);
  keeping_sink sink;
  walk_evtx_block(block.span(), base_offset, reader, sink, {});
  return std::move(sink.records);
}
inline std::vector<read_record> walk(const file_bytes& log, bool quick = true) {
  return walk(log.bytes(), quick);
}

inline std::vector<std::uint64_t> record_numbers(const std::vector<read_record>& records) {
  std::vector<std::uint64_t> numbers;
  for (const read_record& record : records) numbers.push_back(record.number);
  return numbers;
}

}  // namespace zanvik::testing
