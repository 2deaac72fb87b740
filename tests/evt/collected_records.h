// Walks a legacy log and returns its records as text, so that a test can compare them in one step.
//
// Each walk is over a buffer of the log's exact size, which the sanitizers watch.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "evt/evt.h"
#include "evt_builder.h"

namespace zanvik::testing {

inline std::string text_of(evt_text text) {
  std::string out;
  append_evt_text(out, text);
  return out;
}

struct collected_record {
  evt_record head;  // its texts and bytes are gone
  std::string source, computer, sid;
  std::vector<std::string> strings;
  std::size_t data_bytes = 0;
};

struct collected_log : evt_sink {
  bool is_log = false;
  std::vector<collected_record> records;

  explicit collected_log(std::span<const std::byte> bytes) {
    const auto exact = std::make_unique<std::byte[]>(bytes.size());
    if (!bytes.empty()) std::memcpy(exact.get(), bytes.data(), bytes.size());
    is_log = walk_evt_log({exact.get(), bytes.size()}, *this);
  }
  void on_record(const evt_record& record) override {
    collected_record& kept = records.emplace_back();
    kept.head = record;
    kept.source = text_of(record.source_name);
    kept.computer = text_of(record.computer_name);
    sid_to_text(kept.sid, record.sid);
    for (const evt_text string : record.strings) kept.strings.push_back(text_of(string));
    kept.data_bytes = record.data.size();
  }
  std::vector<std::uint32_t> numbers() const {
    std::vector<std::uint32_t> out;
    for (const collected_record& record : records) out.push_back(record.head.record_num);
    return out;
  }
};

// The only record of a log with one record.
inline collected_record collected(const evt_record_fields& fields) {
  const collected_log log(evt_builder().add(fields).bytes());
  return log.records.size() == 1 ? log.records.front() : collected_record{};
}

}  // namespace zanvik::testing
