// Whole events compared with the records of the classic reader: every record that it reads is
// there, in order, and each of its slots and fields has the same bytes under the same name.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "exported_events.h"

namespace zanvik::testing {
namespace {

// A value: its place in the block, its length, its type, and its name.
struct seen_value {
  std::uint64_t at = 0;
  std::uint32_t size = 0;
  std::uint16_t type = 0;
  std::string name;
};

struct seen_record {
  std::uint64_t offset = 0;
  std::uint64_t number = 0;
  std::vector<seen_value> values;
};

class classic_sink : public record_sink {
 public:
  explicit classic_sink(const std::byte* block) : block_(block) {}
  void on_record(record_fields& record) override {
    seen_record kept{record.file_offset, record.number, {}};
    for (std::size_t i = 0; i < record.slots.size(); ++i) {
      const record_slot& slot = record.slots[i];
      // Nested binary XML is identified by its content; a value cut at the chunk's end is as long
      // as that content.
      if (slot.type == value_type::bxml || slot.flags != 0 || record.replaced_text(i)) continue;
      kept.values.push_back(
          {static_cast<std::uint64_t>(record.chunk->bytes.bytes().data() + slot.offset - block_),
           slot.size, slot.type, record.slot_name(i)});
    }
    records.push_back(std::move(kept));
  }
  std::vector<seen_record> records;

 private:
  const std::byte* block_;
};

class view_sink : public event_sink {
 public:
  explicit view_sink(const std::byte* block) : block_(block) {}
  void on_event(const event_view& event) override {
    seen_record kept{event.header().file_offset, event.header().record_number, {}};
    std::vector<std::string> names(event.slots().size());
    for (const event_field& field : event.shape().fields) {
      for (const value_part& part : field.parts) {
        if (part.slot >= 0) names[static_cast<std::size_t>(part.slot)] = field.name;
      }
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
      const event_value& value = event.slots()[i];
      kept.values.push_back(
          {static_cast<std::uint64_t>(value.data - block_), value.size, value.type, names[i]});
    }
    records.push_back(std::move(kept));
  }
  std::vector<seen_record> records;

 private:
  const std::byte* block_;
};

std::string last_word(const std::string& name) {
  const std::size_t blank = name.rfind(' ');
  return blank == std::string::npos ? name : name.substr(blank + 1);
}

bool same_name(const seen_value& classic, const seen_value& ours) {
  return classic.name.empty() || ours.name.empty() || classic.name == ours.name ||
         last_word(classic.name) == ours.name;
}

// `names`: whether the classic reader's names must be the same; damage to a template's body makes
// it name slots after neighbouring bytes.
void expect_values(const seen_record& classic, const seen_record& ours, bool names,
                   const std::string& what) {
  for (const seen_value& value : classic.values) {
    // An unknown type is shown as bytes.
    const std::uint16_t type = value.type < literal_type ? value.type : std::uint16_t{value_type::binary};
    const auto is_same = [&](const seen_value& mine) {
      return mine.at == value.at && mine.size == value.size && mine.type == type &&
             (!names || same_name(value, mine));
    };
    if (std::none_of(ours.values.begin(), ours.values.end(), is_same)) {
      ADD_FAILURE() << what << ": record " << classic.number << ": no value at " << value.at
                    << " of type " << value.type << " called " << value.name;
      return;
    }
  }
}

// Returns how many records both have.
std::size_t compare(std::span<const std::byte> block, bool slack, bool names,
                    const std::string& what) {
  walk_settings settings;
  settings.inc_slack = slack;
  own_bytes classic_bytes(block);
  const time_formats formats;
  record_reader classic_reader(formats);
  classic_sink classic(classic_bytes.span().data());
  walk_evtx_block(classic_bytes.span(), 0, classic_reader, classic, settings);

  own_bytes bytes(block);
  view_sink ours(bytes.span().data());
  evtx_event_reader reader(ours);
  const log_source source;
  reader.set_source(source);
  walk_evtx_block(bytes.span(), 0, reader, settings);

  auto next = ours.records.begin();
  for (const seen_record& record : classic.records) {
    next = std::find_if(next, ours.records.end(),
                        [&](const auto& mine) { return mine.offset == record.offset; });
    if (next == ours.records.end()) {
      ADD_FAILURE() << what << ": record " << record.number << " at " << record.offset
                    << " is not there, or not in its place";
      return 0;
    }
    EXPECT_EQ(next->number, record.number);
    expect_values(record, *next, names, what);
    ++next;
  }
  return classic.records.size();
}

TEST(both_doors, samples) {
  std::size_t records = 0;
  for (const byte_vector& chunk : sample_chunks()) {
    records += compare(chunk, false, true, "sample");
    records += compare(chunk, true, true, "sample with slack");
  }
  EXPECT_GT(records, 150u);
}

TEST(both_doors, damaged_samples) {
  std::mt19937 random(11);
  const auto chunks = sample_chunks();
  std::size_t records = 0;
  for (int round = 0; round < 300; ++round) {
    byte_vector chunk = chunks[random() % chunks.size()];
    chunk[512 + random() % 12000] = static_cast<std::byte>(random());
    records += compare(chunk, round % 2 == 0, false, "round " + std::to_string(round));
    if (HasFailure()) return;
  }
  EXPECT_GT(records, 3000u);
}

TEST(both_doors, real_logs) {
  const std::filesystem::path folder = ZANVIK_SOURCE_DIR "/../shared/logs";
  if (!exists(folder)) GTEST_SKIP() << "there are no real logs beside the source folder";
  std::size_t records = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".evtx") continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const auto log = std::as_bytes(std::span(text));
    if (log.size() <= file_header_bytes) continue;
    records += compare(log.subspan(file_header_bytes), false, true, entry.path().string());
    if (HasFailure()) return;
  }
  EXPECT_GT(records, 40000u);
}

}  // namespace
}  // namespace zanvik::testing
