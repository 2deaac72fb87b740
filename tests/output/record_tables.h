// Puts records into a container in a few words, and makes output formats that options can give.
#pragma once

#include <initializer_list>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/time_format.h"
#include "events/log_record.h"
#include "options/output_format.h"
#include "output/write_records.h"

namespace zanvik {

inline constexpr std::uint64_t new_year_2013 = 130'014'792'000'000'000;  // 2013-01-01 02:00:00

struct test_field {
  std::string name;
  std::string value;
  bool literal = false;  // stands in the shape
};

// A record to be made; `add_to` copies what it points to into the container.
struct test_record {
  LogRecord record;
  std::string provider = "P";
  std::string description;
  std::vector<test_field> fields;

  explicit test_record(std::uint64_t event_id, std::vector<test_field> values = {})
      : fields(std::move(values)) {
    record.record_number = 7;
    record.event_id = event_id;
    record.time = new_year_2013;
    record.level = 4;
    record.file_offset = 4608;
    record.flags = record_inside_range;
  }
  test_record& flags(std::uint32_t bits) { return record.flags = bits, *this; }
  test_record& number(std::uint64_t value) { return record.record_number = value, *this; }
  test_record& time(std::uint64_t value) { return record.time = value, *this; }
  test_record& from(std::string_view name) { return provider = name, *this; }
  test_record& caption(std::string_view text) { return description = text, *this; }
  test_record& legacy(std::uint32_t type) {
    record.is_evtx = false;
    record.level = type;
    provider.clear();
    return *this;
  }
  void add_to(record_container& records) const;
};

inline void test_record::add_to(record_container& records) const {
  record_shape shape;
  std::string block;
  for (const test_field& field : fields) {
    shape.columns.push_back({field.name, field.literal, field.literal ? field.value : ""});
    if (field.literal) continue;
    char head[max_cell_head];
    const bool marked = field.value.find_first_of(",|\r\n") != std::string::npos;
    block.append(head, write_cell_head(head, field.value.size(), marked));
    block += field.value;
    ++shape.value_count;
  }
  LogRecord added = record;
  added.provider = records.intern_text(provider);
  added.description = records.intern_text(description);
  added.shape = records.intern_shape(std::move(shape));
  if (!block.empty()) {
    char* to = records.arena().reserve(block.size());
    block.copy(to, block.size());
    records.arena().keep(block.size());
    added.values = to;
  }
  records.add(added);
}

inline output_format padded_format() {
  output_format format;
  format.base16 = false;
  build_format_descriptor(format.descriptor, format.date_format, format.time_format, false);
  return format;
}
inline output_format csv_format() {
  output_format format = padded_format();
  format.csv_separator = ",";
  format.separator_char = ',';
  format.no_whitespace = true;
  return format;
}

inline log_source test_log(std::string_view path = "System.evtx") {
  log_source log;
  log.path = path;
  return log;
}

// The output of write_records for the records, in the given order; of "System.evtx" unless
// `context` has another log.
inline std::string table_text(const std::vector<test_record>& given, output_format format,
                              write_context context = {}) {
  if (context.log.path.empty()) context.log = test_log();
  record_container records;
  for (const test_record& record : given) record.add_to(records);
  std::ostringstream out;
  output_memory memory;
  write_records(out, records, format, context, memory);
  return out.str();
}

// A line whose cells are given one by one.
inline std::string line(std::string_view separator, std::initializer_list<std::string_view> cells) {
  std::string text;
  for (const std::string_view cell : cells) {
    if (!text.empty()) text += separator;
    text += cell;
  }
  return text + '\n';
}

// Makes records of few or many shapes, with texts that are short, long, empty, and full of
// characters to replace.
class record_maker {
 public:
  explicit record_maker(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t end) { return random_() % end; }
  bool one_in(std::size_t n) { return below(n) == 0; }
  std::string value() {
    static const std::string odd[] = {"",
                                      "a,b",
                                      "a|b",
                                      "\n\r\n",
                                      "\r",
                                      "x\ry\n",
                                      "{\"",
                                      "{\"a",
                                      "{\"a\":1,",
                                      "\"quoted\"",
                                      "\r\n,",
                                      "\xc3\xa9;",
                                      std::string("\t]\0|", 4)};
    static const std::size_t sizes[] = {1,  15, 31,  32,  33,  62,  63,
                                        64, 65, 127, 128, 599, 600, 9000};
    if (one_in(2)) return odd[below(std::size(odd))];
    std::string text(sizes[one_in(8) ? below(std::size(sizes)) : below(5)], 'v');
    if (one_in(6)) text[below(text.size())] = ",|\n\r"[below(4)];
    return text;
  }
  log_source log() { return test_log(one_in(4) ? "/Cases/Second,one.evtx" : "System.evtx"); }
  test_record record() {
    static const std::string names[] = {
        "",      "A",    "Channel",       "Computer", "EventID", "Provider Name",       "a,b",
        "a|b\n", "data", "computer name", "z",        "zz",      std::string(601, 'w'), "\xc3\xa4"};
    static const std::uint32_t flags[] = {0x40, 0x40, 0x40, 0x01,      0x41,
                                          0x42, 0x08, 0x09, 0x80000040};
    std::map<std::string, test_field> fields;
    const std::uint64_t shape = below(one_in(4) ? 16384 : 3) * 5461 % 16384;
    for (std::size_t i = 0; i < std::size(names); ++i) {
      if (shape >> i & 1) fields[names[i]] = {names[i], value(), (shape + i) % 3 == 0 && one_in(2)};
    }
    test_record made(1 + below(2));
    for (const auto& [name, field] : fields) made.fields.push_back(field);
    made.flags(flags[below(std::size(flags))]).number(random_());
    made.from(one_in(9) ? value() : "Prov");
    made.record.level = static_cast<std::uint32_t>(below(6));
    made.record.file_offset = std::uint64_t{random_()} << below(32);
    made.record.is_evtx = !one_in(5);
    made.time(one_in(9)
                  ? below(2)
                  : new_year_2013 / 3 * (one_in(4) ? 2 : 3) + random_() * std::uint64_t{1000});
    if (one_in(3)) made.caption(one_in(2) ? "cap" : "a caption, longer");
    return made;
  }

 private:
  std::mt19937 random_;
};

}  // namespace zanvik
