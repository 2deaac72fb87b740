#include "run/log_list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "event_builder.h"
#include "evt_builder.h"
#include "log_builder.h"
#include "scratch_dir.h"

namespace zanvik {
namespace {

using namespace zanvik::testing;
using namespace std::string_literals;

log_probe probe;  // one for all tests, like the one of a run
const std::string evtx_head = "ElfFile\0........"s;
const std::string evt_head = "\x30\0\0\0LfLe........"s;

std::string text_of(const byte_vector& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// An .evtx log whose first record names `channel`.
log_builder log_of(const std::string& channel) {
  return log_builder().chunk({record(1, {.channel = channel})});
}

// The same with a first record that has no template.
log_builder plain_log_of(const std::string& channel) {
  return log_builder().chunk({plain_record(1, 133000000000000000, [channel](bxml_builder& b) {
    b.fragment_header().open("Event", element_form::without_id).close_start();
    b.open("Channel", element_form::without_id).close_start().value(channel).end_element();
    b.end_element().end_of_stream();
  })});
}

// A legacy log with a first record of that length whose source name is `source`.
std::string evt_log(const std::string& source, std::uint32_t length = 0) {
  evt_builder log;
  log.add({.source = source});
  std::string text = text_of(log.bytes());
  if (length != 0) std::memcpy(text.data() + 48, &length, 4);
  return text;
}

TEST(classify_log, by_name_and_by_content) {
  const std::string partition = "Microsoft-Windows-Partition/Diagnostic";
  log_builder damaged = log_of("Any");
  damaged.poke_u32(0x1000, 0);
  const std::tuple<const char*, const char*, std::string, bool, bool, const char*> rows[] = {
      {"a known name, any case", "SYSTEM.evtx", evtx_head, true, true, "system"},
      {"a known name anywhere", "x.Security.backup", evtx_head, true, true, "security"},
      {"security is looked for before system", "system.security.evtx", evtx_head, true, true,
       "security"},
      {"legacy names", "AppEvent.Evt", evt_head, true, false, "application"},
      {"a known name in spite of its content", "security.evtx", text_of(log_of("Other").bytes()),
       true, true, "security"},
      {"the channel of a first record without a template", "p.evtx",
       text_of(plain_log_of("Fabrikam/Plain").bytes()), true, true, "fabrikam/plain"},
      {"the channel of the first record", "a.evtx", text_of(log_of(partition).bytes()), true, true,
       "microsoft-windows-partition/diagnostic"},
      {"quotes go", "a.evtx", text_of(log_of("\"Any\"").bytes()), true, true, "any"},
      {"one channel has a short name", "a.evtx",
       text_of(log_of("Microsoft-Windows-DriverFrameworks-UserMode/Operational").bytes()), true,
       true, "driverframeworks"},
      {"less than one chunk", "a.evtx", text_of(log_of("Any").bytes()).substr(0, 0x10fff), false,
       true, "a.evtx"},
      {"no chunk", "a.evtx", text_of(damaged.bytes()), false, true, "a.evtx"},
      {"no record: the name stays", "A.evtx",
       evtx_head + std::string(0xff0, 0) + "ElfChnk"s + std::string(0xfff9, 0), true, true,
       "a.evtx"},
      {"four bytes into the source's name", "old.evt", evt_log("xxSecurity"), true, false,
       "security"},
      {"a whole source name is missed", "Old.evt", evt_log("Security"), true, false, "old.evt"},
      {"a longer text is another", "old.evt", evt_log("xxSecurityX"), true, false, "old.evt"},
      {"first record too short", "old.evt", evt_log("xxSecurity", 59), false, false, "old.evt"},
      {"first record too long", "old.evt", evt_log("xxSecurity", 4097), false, false, "old.evt"},
      {"header alone", "old.evt", evt_head, false, false, "old.evt"},
      {"neither kind", "system.evtx", "something else..", false, true, ""},
      {"half a signature", "system.evtx", "ElfF", false, true, ""},
      {"empty", "system.evtx", "", false, true, ""},
  };
  for (const auto& [reason, name, bytes, recognised, is_evtx, channel] : rows) {
    const scratch_dir scratch;
    LogEntry entry;
    const std::string path = scratch.write(name, bytes);
    EXPECT_EQ(classify_log(entry, path, probe), recognised) << reason;
    EXPECT_EQ(entry.is_evtx, is_evtx) << reason;
    EXPECT_EQ(entry.channel, channel) << reason;
    EXPECT_EQ(entry.path, path) << reason;
    EXPECT_EQ(entry.unclassified, *channel == '\0') << reason;
  }
}

TEST(classify_log, template_offset_beyond_the_head_is_refused) {
  const scratch_dir scratch;
  log_builder log = log_of("Any");
  const std::size_t place = log.chunk_offset(0) + 546;
  LogEntry entry;
  log.poke_u32(place, 0x11001);
  EXPECT_FALSE(classify_log(entry, scratch.write("a.evtx", text_of(log.bytes())), probe));
  log.poke_u32(place, 0x11000);  // still accepted; the record then has no channel
  EXPECT_TRUE(classify_log(entry, scratch.write("a.evtx", text_of(log.bytes())), probe));
}

TEST(add_logs, one_entry_for_each_path_whatever_the_file_is) {
  const scratch_dir scratch;
  const std::string b = scratch.write("b.System.evtx", evtx_head);
  const std::string a = scratch.write("a.sysevent.evt", evt_head);
  const std::string lost = scratch.path("lost");
  LogEntry scratch_entry;
  log_map table;
  add_logs(b + " | " + a + "||" + lost + "|" + b, scratch_entry, probe, table);
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table.begin()->first, a);
  EXPECT_EQ(table[b].channel, "system");
  EXPECT_FALSE(table[a].is_evtx);
  EXPECT_TRUE(table[lost].unclassified);
  EXPECT_EQ(table[lost].channel, "");
  EXPECT_FALSE(table[lost].is_evtx) << "what failed keeps what the entry before had";
}

TEST(add_logs, splits_on_one_separator_alone) {
  LogEntry scratch_entry;
  log_map table;
  add_logs("a,b;c", scratch_entry, probe, table);
  EXPECT_TRUE(table.size() == 2 && table.count("a") == 1 && table.count("b;c") == 1);
  table.clear();
  add_logs(" a ", scratch_entry, probe, table);
  EXPECT_EQ(table.count(" a "), 1u) << "a name alone keeps its blanks";
}

}  // namespace
}  // namespace zanvik
