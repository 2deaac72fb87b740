// The time of a record: that of its header, or with `event_time` its own TimeCreated.
#include <gtest/gtest.h>

#include "read_back.h"

namespace zanvik::testing {
namespace {

constexpr char template_guid[] = "6b29fc40-ca47-1067-b31d-00dd010662da";

struct time_sink : record_sink {
  void on_record(record_fields& record) override { times.push_back(record.time); }
  std::vector<std::uint64_t> times;
};

// The time that the only record of a log gets.
std::uint64_t time_of(record_builder record, bool event_time, bool quick = true) {
  const auto log = log_builder().chunk({std::move(record)});
  exact_buffer block(log.bytes());
  const time_formats format;
  record_reader reader(format, quick);
  time_sink sink;
  walk_settings settings;
  settings.reading.event_time = event_time;
  walk_evtx_block(block.span(), 0, reader, sink, settings);
  EXPECT_EQ(sink.times.size(), 1u);
  return sink.times.empty() ? ~std::uint64_t{0} : sink.times[0];
}

// <Event><TimeCreated SystemTime="...">, the attribute's value written by `time`.
bxml_writer event_with(bxml_writer time) {
  return [time](bxml_builder& x) {
    x.fragment_header().open("Event").close_start().open_with_attributes("TimeCreated");
    x.attribute("SystemTime");
    time(x);
    x.close_empty().text_element("Channel", "A").end_element().end_of_stream();
  };
}

record_builder with_slot(std::uint64_t header, slot_value value) {
  const std::uint16_t type = value.type;
  const auto body =
      event_with([type](bxml_builder& x) { x.normal_sub(0, static_cast<std::uint8_t>(type)); });
  return template_record(1, header, {template_guid, body}, {std::move(value), slot::uint16(7)});
}

TEST(record_time, is_the_headers_unless_its_own_is_asked_for) {
  const std::uint64_t header = filetime(2024, 1, 2);
  const std::uint64_t own = filetime(2024, 1, 1, 8, 9, 10, 1234567);
  const std::uint64_t own_ms = filetime(2024, 1, 1, 8, 9, 10, 1230000);
  const auto literal = [](std::string_view text) {
    return event_with([text](bxml_builder& x) { x.value(text); });
  };
  const std::string iso = "2024-01-01T08:09:10.1234567Z";
  const std::tuple<const char*, record_builder, std::uint64_t, std::uint64_t> rows[] = {
      {"FILETIME slot", with_slot(header, slot::filetime(own)), header, own},
      {"an export's first record", with_slot(0, slot::filetime(own)), 0, own},
      {"SYSTEMTIME slot", with_slot(header, slot::systemtime(2024, 1, 1, 8, 9, 10, 123)), header,
       own_ms},
      {"text slot", with_slot(header, slot::utf16(iso)), header, own},
      {"null slot: there is none", with_slot(header, slot::null(8)), header, header},
      {"0 is no time", with_slot(header, slot::filetime(0)), header, header},
      {"nor is one before 1900", with_slot(header, slot::filetime(5)), header, header},
      {"nor a text that is none", with_slot(header, slot::utf16("soon")), header, header},
      {"in the template itself",
       template_record(1, header, {template_guid, literal(iso)}, {slot::uint16(7)}), header, own},
      {"no template: its own either way", plain_record(1, header, literal(iso)), own, own},
      {"no template, a blank for the T",
       plain_record(1, header, literal("2024-01-01 08:09:10.123456700")), filetime(2024, 1, 1),
       own},
  };
  for (const auto& [reason, record, by_default, by_event] : rows) {
    for (const bool quick : {true, false}) {
      EXPECT_EQ(time_of(record, false, quick), by_default) << reason;
      EXPECT_EQ(time_of(record, true, quick), by_event) << reason;
    }
  }
}

}  // namespace
}  // namespace zanvik::testing
