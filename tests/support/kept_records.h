// What commands keep of a log, and its columns as text, so that a test can compare them in one
// step.
#pragma once

#include <gtest/gtest.h>

#include "keep/keeping_sink.h"
#include "log_builder.h"
#include "select/evtx_selector.h"

namespace zanvik::testing {

// "name=value; name=value" by ascending name. An unmarked cell must contain nothing that needs
// care.
inline std::string columns_text(const LogRecord& record) {
  std::string text;
  cell_reader values(record.values);
  for (const shape_column& column : record.shape->columns) {
    const value_cell cell = column.literal ? value_cell{column.text, true} : values.next();
    EXPECT_TRUE(cell.marked || cell.text.find_first_of(",|\r\n") == cell.text.npos) << cell.text;
    text.append(text.empty() ? "" : "; ").append(column.name).append("=").append(cell.text);
  }
  return text;
}

// The records that commands keep of an .evtx log, by ascending time.
struct kept_records {
  kept_records(std::span<const std::byte> log, const std::vector<ReportCommand>& commands,
               bool inc_slack = false) {
    keeping_sink keeping(commands, container, plans);
    evtx_selector selector(commands, keeping);
    const output_format format;
    record_reader reader(format);
    walk_settings settings;
    settings.inc_slack = inc_slack;
    byte_vector bytes(log.begin(), log.end());
    walk_evtx_block(bytes, 0, reader, selector, settings);
    for (const LogRecord* record : container.in_time_order()) {
      records.push_back(record);
      numbers.push_back(record->record_number);
    }
  }
  const LogRecord& operator[](std::size_t i) const { return *records.at(i); }

  record_container container;
  plan_cache plans;
  std::vector<const LogRecord*> records;
  std::vector<std::uint64_t> numbers;
};

inline ReportCommand listing() {
  ReportCommand command;
  command.all_data = true;
  return command;
}

// A template with one element per slot, so that any names can be given.
inline template_definition named_slots(const char* guid, std::vector<std::string> names,
                                       const bxml_writer& before = {}) {
  return {guid, [=](bxml_builder& x) {
            x.fragment_header();
            if (before) before(x);
            for (std::uint16_t i = 0; i < names.size(); ++i) {
              x.open(names[i]).close_start().normal_sub(i, 1).end_element();
            }
            x.end_of_stream();
          }};
}

}  // namespace zanvik::testing
