// Conditions on whole events: the texts of options, and the events they select.
#include "select/event_conditions.h"

#include <gtest/gtest.h>

#include "exported_events.h"

namespace zanvik::testing {
namespace {

struct pattern_row {
  const char* text;
  const char* pattern;
  bool matches;
};

TEST(event_conditions, patterns) {
  const pattern_row rows[] = {
      {"Security", "security", true},
      {"Security", "Sec*", true},
      {"Security", "*ity", true},
      {"Security", "S*c*y", true},
      {"Security", "S?curity", true},
      {"Security", "Sec", false},
      {"", "*", true},
      {"", "?", false},
      {"", "", true},
      {"aab", "*ab", true},
      {"\xc3\xa4", "?", true},
      {"a", "a**", true},
  };
  for (const pattern_row& row : rows) {
    EXPECT_EQ(matches_pattern(row.text, row.pattern), row.matches)
        << row.text << " " << row.pattern;
  }
}

struct time_row {
  const char* text;
  const char* first;  // empty: refused
  const char* last;
};

TEST(event_conditions, times) {
  const time_row rows[] = {
      {"2024-03-09", "2024-03-09T00:00:00.0000000Z", "2024-03-09T23:59:59.9999999Z"},
      {"2024-02-29T10:00", "2024-02-29T10:00:00.0000000Z", "2024-02-29T10:00:59.9999999Z"},
      {"2024-03-09 10:00:05", "2024-03-09T10:00:05.0000000Z", "2024-03-09T10:00:05.9999999Z"},
      {"2024-03-09T10:00:05.12Z", "2024-03-09T10:00:05.1200000Z", "2024-03-09T10:00:05.1299999Z"},
      {"2024-03-09T00:30+01:00", "2024-03-08T23:30:00.0000000Z", "2024-03-08T23:30:59.9999999Z"},
      {"2024-03-09T00:30-0130", "2024-03-09T02:00:00.0000000Z", "2024-03-09T02:00:59.9999999Z"},
      {"2024-03-09+01:00", "2024-03-08T23:00:00.0000000Z", "2024-03-09T22:59:59.9999999Z"},
      {"2024-03-09Z", "2024-03-09T00:00:00.0000000Z", "2024-03-09T23:59:59.9999999Z"},
      {"2024-03-09+", "", ""},
      {"2023-02-29", "", ""},
      {"2024-13-01", "", ""},
      {"2024-03-09T24:00", "", ""},
      {"2024-03-09T10", "", ""},
      {"09.03.2024", "", ""},
      {"2024-03-09T10:00x", "", ""},
      {"", "", ""},
  };
  const auto shown = [](const std::optional<std::uint64_t>& time) {
    char text[40];
    return time ? std::string(text, write_iso_time(text, *time)) : std::string();
  };
  for (const time_row& row : rows) {
    EXPECT_EQ(shown(read_time(row.text, false)), row.first) << row.text;
    EXPECT_EQ(shown(read_time(row.text, true)), row.last) << row.text;
  }
}

TEST(event_conditions, event_ids) {
  const auto taken = [](const char* list, unsigned id) {
    event_conditions conditions;
    EXPECT_TRUE(read_event_ids(list, conditions)) << list;
    return conditions.event_ids->test(id);
  };
  EXPECT_TRUE(taken("4624,1000-1010", 1010));
  EXPECT_FALSE(taken("4624,1000-1010", 1011));
  EXPECT_TRUE(taken("!4634", 1));
  EXPECT_FALSE(taken("!4634", 4634));
  EXPECT_FALSE(taken("1-10,!5", 5));
  event_conditions twice;
  EXPECT_TRUE(read_event_ids("4624,!7", twice) && read_event_ids("1-10", twice));
  EXPECT_TRUE(twice.event_ids->test(4624) && twice.event_ids->test(6)) << "any of both lists";
  EXPECT_FALSE(twice.event_ids->test(7)) << "but for what one of them leaves out";
  for (const char* bad : {"", "x", "1,", "5-1", "70000", "1-", "-5", "!"}) {
    event_conditions conditions;
    EXPECT_FALSE(read_event_ids(bad, conditions)) << bad;
  }
}

// Which of three events are taken, by their numbers.
std::string taken_by(const std::function<bool(event_conditions&)>& set) {
  class filtering_sink : public event_sink {
   public:
    explicit filtering_sink(const event_conditions& conditions) : filter_(conditions) {}
    void on_event(const event_view& event) override {
      if (filter_.takes(event)) numbers += std::to_string(event.header().record_number);
    }
    std::string numbers;

   private:
    event_filter filter_;
  };
  event_conditions conditions;
  EXPECT_TRUE(set(conditions));
  const log_builder log = log_builder().chunk({
      record(1, {.event_id = 4624,
                 .level = 0,
                 .channel = "Security",
                 .data = {{"User", slot::utf16("CORP\\Alice")}, {"Type", slot::uint32(3)}}}),
      record(2, {.event_id = 7036,
                 .level = 2,
                 .channel = "System",
                 .user_sid = "S-1-5-18",
                 .form = payload_form::unnamed_event_data,
                 .data = {{"", slot::multi_utf16({"Spooler", "alice"})}}}),
      record(3, {.event_id = 1,
                 .provider = "Other",
                 .form = payload_form::user_data,
                 .data = {{"Path", slot::utf16("C:\\Temp\\x.exe")},
                          {"Owner", slot::utf16("J\xc3\x96RG M\xc3\x9cller")}}}),
  });
  filtering_sink sink(conditions);
  evtx_event_reader reader(sink);
  const log_source source;
  reader.set_source(source);
  own_bytes bytes(log.bytes());
  walk_evtx_block(bytes.span(), 0, reader, {});
  return sink.numbers;
}

TEST(event_conditions, each_takes_its_events) {
  EXPECT_EQ(taken_by([](auto& c) { return read_event_ids("4624,1", c); }), "13");
  EXPECT_EQ(taken_by([](auto& c) { return read_levels("error", c); }), "2");
  EXPECT_EQ(taken_by([](auto& c) { return read_levels("0,4", c); }), "13");
  EXPECT_EQ(taken_by([](auto& c) {
              c.channels = {"sys*", "Security"};
              return true;
            }),
            "12");
  EXPECT_EQ(taken_by([](auto& c) {
              c.providers = {"other"};
              return true;
            }),
            "3");
  EXPECT_EQ(taken_by([](auto& c) {
              c.users = {"alice"};
              return true;
            }),
            "12")
      << "behind a domain, and as an item of an array";
  EXPECT_EQ(taken_by([](auto& c) {
              c.users = {"S-1-5-18"};
              return true;
            }),
            "2");
  EXPECT_EQ(taken_by([](auto& c) { return read_where("Type=3", c); }), "1");
  EXPECT_EQ(taken_by([](auto& c) { return read_where("Type!=3", c); }), "23")
      << "without the field it has not that value";
  EXPECT_EQ(taken_by([](auto& c) { return read_where("path=*.EXE", c); }), "3");
  EXPECT_EQ(
      taken_by([](auto& c) { return read_where("Channel=S*", c) && read_where("Level=2", c); }),
      "2")
      << "all have to hold";
  EXPECT_EQ(taken_by([](auto& c) {
              c.contains = {"TEMP"};
              return true;
            }),
            "3");
  EXPECT_EQ(taken_by([](auto& c) { return read_where("Data=spool*", c); }), "2")
      << "a datum without a name";
  EXPECT_EQ(taken_by([](auto& c) { return read_where("param1=ALICE", c); }), "2");
  EXPECT_EQ(taken_by([](auto& c) { return read_where("param2=*", c); }), "");
  EXPECT_EQ(taken_by([](auto& c) {
              c.contains = {"\xc3\xb6rg m\xc3\x9c"};
              return true;
            }),
            "3")
      << "letters beyond ASCII, in any case";
  EXPECT_EQ(taken_by([](auto& c) { return read_where("Owner=j\xc3\xb6*\xc3\x9cL?ER", c); }), "3");
  EXPECT_EQ(taken_by([](auto& c) {
              c.from = c.to = default_filetime(2);
              return true;
            }),
            "2")
      << "both ends belong to it";
  for (const char* bad : {"Type", "=x", "!=x"}) {
    event_conditions conditions;
    EXPECT_FALSE(read_where(bad, conditions)) << bad;
  }
}

}  // namespace
}  // namespace zanvik::testing
