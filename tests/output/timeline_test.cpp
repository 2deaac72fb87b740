// Timeline lines, written by hand, and the fast way compared with the plain one.
#include <gtest/gtest.h>

#include "record_tables.h"
#include "reference/plain_output.h"

namespace zanvik {
namespace {

const char timeline_head[] =
    "date,time,timezone,MACB,source,sourcetype,type,user,host,short,desc,version,filename,inode,"
    "notes,format,extra\n";
const char body_head[] =
    "md5|name|inode|mode as string|uid|gid|size|access time|modify time|mft time|create time\n";

// As the options leave it for `-csvl2t` and `-bodyfile`.
output_format timeline_format() {
  output_format format = padded_format();
  format.csv_separator = ",";
  format.separator_char = ',';
  format.output_csv = false;
  format.output_l2t = true;
  return format;
}
output_format body_format() {
  output_format format = padded_format();
  format.csv_separator = "|";
  format.output_csv = false;
  format.output_bodyfile = true;
  return format;
}

write_context of_log(write_context context = {}) {
  context.log = test_log();
  context.log.channel = "system";
  context.program_name = "zanvik";
  return context;
}

test_record service_record() {
  return test_record(7036, {{"Channel", "System", true},
                            {"Computer", "PC-1"},
                            {"empty", ""},
                            {"none", "", true},
                            {"param1", "a,b|c"}})
      .from("Service Control Manager");
}

// The columns after the time of service_record(), from a run without further options.
const char service_columns[] =
    "UTC,M..B,EVTX,system,Event Logged,,PC-1,Event ID: 7036 : Service Control Manager,"
    "[Channel:System] [Computer:PC-1] [param1:a;b|c],2,System.evtx,0,"
    "{\"Provider\":\"Service Control Manager\"},zanvik (morvane),Record# 7\n";

TEST(timeline, time_columns) {
  const struct {
    const char* reason;
    bool pair, no_whitespace;
    std::string begin;
  } cases[] = {
      {"a blank before the time", false, false, "date,time,"},
      {"no blank", false, true, "date,time,"},
      {"a blank before the pair", true, false, "date/time,"},
      {"the pair keeps its own blank", true, true, "date/time,"},
  };
  const char* times[] = {"2013-01-01, 02:00:00.000,", "2013-01-01,02:00:00.000,",
                         " 2013-01-01 02:00:00.000,", "2013-01-01 02:00:00.000,"};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    output_format format = timeline_format();
    format.pair_datetime = cases[i].pair;
    format.no_whitespace = cases[i].no_whitespace;
    const std::string text = table_text({service_record()}, format, of_log());
    EXPECT_EQ(text.substr(0, cases[i].begin.size()), cases[i].begin) << cases[i].reason;
    EXPECT_EQ(text.substr(text.find('\n') + 1), times[i] + std::string(service_columns))
        << cases[i].reason;
  }
}

TEST(timeline, columns_that_depend_on_options_and_the_log) {
  write_context named = of_log();
  named.username = "Ann,B";
  named.hostname = "H";
  write_context unnamed = of_log();
  unnamed.log.channel = "";
  write_context legacy = of_log();
  legacy.log.channel = "";
  legacy.log.kind = log_kind::evt;
  legacy.log.inode = 258;
  const write_context offsets = of_log({.inc_slack = true, .show_offsets = true});
  const test_record bare = test_record(1).from("");
  const test_record slack = test_record(1).flags(record_plain_or_slack);
  output_format base16 = timeline_format();
  base16.base16 = true;
  const output_format plain = timeline_format();
  const std::tuple<const char*, test_record, output_format, write_context, const char*> cases[] = {
      {"the user comes raw, the host never from the options", bare, plain, named,
       ",Event Logged,Ann,B,,Event ID: 1,,2,System.evtx,0,,zanvik (morvane),"},
      {"the source type from the record", service_record(), plain, unnamed, ",EVTX,System,Event"},
      {"no source type at all", bare, plain, unnamed, ",EVTX,,Event Logged,"},
      {"a legacy log", test_record(528, {{"Channel", "S"}, {"computer name", "OLD"}}).legacy(8),
       plain, legacy,
       ",M..B,EVT,,Event Logged,,OLD,Event ID: 528,[Channel:S] [computer name:OLD],"
       "2,System.evtx,258,,zanvik"},
      {"a base of 16", bare, base16, of_log(), ",2,System.evtx,0x00000000,,"},
      {"notes of a good record", test_record(1), plain, offsets,
       ",{\"offset\":\"4608\"; \"Provider\":\"P\"},"},
      {"notes of one from slack", slack, base16, offsets,
       ",{\"offset\":\"0x1200\"; \"slack\":\"true\"; \"Provider\":\"P\"},"},
      {"the slack mark only with its option", slack, plain, of_log(), ",{\"Provider\":\"P\"},"},
      {"records out of range are written too", test_record(1).flags(record_outside_range), plain,
       of_log(), ",Record# 7\n"},
      {"an event ID in full", test_record(0x80000003), plain, of_log(), ",Event ID: 2147483651 :"},
  };
  for (const auto& [reason, record, format, context, part] : cases) {
    const std::string text = table_text({record}, format, context);
    EXPECT_NE(text.find(part), std::string::npos) << reason << ": " << text;
  }
}

TEST(timeline, separators_and_line_ends_in_texts) {
  test_record record =
      test_record(1, {{"Computer", "x,y"}, {"a,b", "1,2|3"}, {"c", "\r"}, {"d", "p\r\nq"}})
          .from("A,\nB");
  write_context context = of_log();
  context.log.path = "a,\nb.evtx";
  // The list is marked as a whole: beside the CR LF, the lone CR is kept.
  const std::string rest = "2,a;\nb.evtx,0,{\"Provider\":\"A;[LF]B\"},zanvik (morvane),Record# 7\n";
  EXPECT_NE(
      table_text({record}, timeline_format(), context)
          .find(",x,y,Event ID: 1 : A;\nB,[Computer:x;y] [a;b:1;2|3] [c:\r] [d:p[CRLF]q]," + rest),
      std::string::npos);
  output_format tabs = timeline_format();
  tabs.csv_separator = "\t";
  tabs.separator_char = tabs.separator_substitute = 0;
  EXPECT_NE(table_text({record}, tabs, of_log()).find("\t[Computer:x;y] [a,b:1;2|3] [c:\r] [d:p"),
            std::string::npos);
}

TEST(timeline, no_line_without_a_time_but_its_header) {
  EXPECT_EQ(table_text({test_record(1).time(0)}, timeline_format(), of_log()), timeline_head);
  EXPECT_EQ(table_text({}, timeline_format(), of_log()), "");
}

TEST(body_file, lines) {
  write_context all = of_log();
  all.allparams = true;
  all.log.inode = 258;
  const std::string times = "|1357005600|1357005600|1357005600|1357005600\n";
  const std::tuple<const char*, test_record, write_context, std::string> cases[] = {
      {"no fields unless asked for", service_record(), of_log(),
       "0|Event ID: 7036-Service Control Manager|0||0|0|0" + times},
      {"fields", service_record(), all,
       "0|Event ID: 7036-Service Control Manager, [Channel:System], [Computer:PC-1], "
       "[param1:a;b;c]|258||0|0|0" +
           times},
      {"no field has a value", test_record(1, {{"x", ""}}), all,
       "0|Event ID: 1-P|258||0|0|0" + times},
      {"no provider, no fields", test_record(528).legacy(8), all,
       "0|Event ID: 528|258||0|0|0" + times},
      {"bars go everywhere, line ends stay", test_record(1, {{"a|b,", "1\r\n2"}}).from("P|Q\n"),
       all, "0|Event ID: 1-P;Q\n, [a;b,:1\r\n2]|258||0|0|0" + times},
      {"no time", test_record(1).time(0), of_log(), "0|Event ID: 1-P|0||0|0|0|0|0|0|0\n"},
      {"a second before 1970, rounded down", test_record(1).time(116'444'735'995'000'000), of_log(),
       "0|Event ID: 1-P|0||0|0|0|-1|-1|-1|-1\n"},
  };
  for (const auto& [reason, record, context, line] : cases) {
    EXPECT_EQ(table_text({record}, body_format(), context), body_head + line) << reason;
  }
}

TEST(timeline, the_header_stands_once_and_lines_go_by_time) {
  output_format format = body_format();
  format.output_l2t = true;  // the body file comes first
  format.csv_separator = ";";
  std::ostringstream out;
  output_memory memory;
  for (int log = 0; log < 2; ++log) {
    record_container records;
    test_record(1).time(new_year_2013 + 10'000'000).add_to(records);
    test_record(2).add_to(records);
    write_records(out, records, format, of_log(), memory);
  }
  const std::string lines =
      "0|Event ID: 2-P|0||0|0|0|1357005600|1357005600|1357005600|1357005600\n"
      "0|Event ID: 1-P|0||0|0|0|1357005601|1357005601|1357005601|1357005601\n";
  EXPECT_EQ(out.str(), body_head + lines + lines);
}

TEST(timeline, fast_way_gives_what_the_plain_one_does) {
  for (unsigned seed = 0; seed < 80; ++seed) {
    record_maker make(seed);
    output_format format = make.one_in(3) ? body_format() : timeline_format();
    const char separators[] = {',', '|', '\0'};
    format.separator_char = separators[seed % 3];
    if (make.one_in(4)) format.separator_substitute = '\0';
    if (make.one_in(3)) format.csv_separator = " and ";
    format.pair_datetime = make.one_in(3);
    format.no_whitespace = make.one_in(3);
    format.base16 = make.one_in(3);
    output_memory memory;
    bool plain_pending = memory.header_pending = make.one_in(2);
    if (make.one_in(3)) format.alias_paths = {{"/cases", "L,|"}};
    log_source log = make.log();
    log.channel = make.one_in(2) ? make.value() : "";
    log.kind = make.one_in(3) ? log_kind::evt : log_kind::evtx;
    log.inode = make.one_in(2) ? 0u : 77u;
    const std::string user = make.value();
    const write_context context{.log = log,
                                .inc_slack = make.one_in(2),
                                .show_offsets = make.one_in(2),
                                .allparams = make.one_in(2),
                                .username = user,
                                .program_name = "zanvik"};
    record_container records;
    for (int i = 0; i < 40; ++i) make.record().add_to(records);
    std::ostringstream fast, plain;
    write_plain_timeline(plain, records.in_time_order(), format, context, plain_pending);
    write_records(fast, records, format, context, memory);
    ASSERT_EQ(fast.str(), plain.str()) << "seed " << seed;
    EXPECT_EQ(memory.header_pending, plain_pending);
  }
}

}  // namespace
}  // namespace zanvik
