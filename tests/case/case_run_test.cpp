// Whole runs of `zanvik export --format sqlite`: what is in the case, and what is refused.
#include <gtest/gtest.h>

#include "../run/program_run.h"
#include "evt_builder.h"
#include "log_builder.h"
#include "samples_builder.h"
#include "sql_answers.h"

namespace zanvik::testing {
namespace {

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

std::string small_log(std::uint64_t number) {
  return bytes_of_log(log_builder().chunk({record(number)}));
}

program_run into_case(const std::string& output, std::vector<std::string> args) {
  args.insert(args.begin(), {"export", "--format", "sqlite", "-o", output});
  return run_zanvik(args);
}

// A log with values that somebody prepared.
log_builder hostile_log() {
  event odd;
  odd.event_id = 65535;
  odd.provider = "'); DROP TABLE event; --";
  odd.channel = "Security\"`]";
  odd.computer = "%s%n \xf0\x9f\x98\x80";
  odd.user_sid = "S-1-5-21-1-2-3-1104";
  odd.activity_id = "{5F2863D6-E0AB-4470-8530-8F129B46177A}";
  odd.data = {
      {"a\"b.c$[0]", slot::utf16("x'||y")},
      {"Same", slot::utf16("1")},
      {"Same", slot::utf16("2")},
      {"Control", slot::utf16("one\r\n\ttwo\x01")},
      {"Half", slot::raw(1, {std::byte{0x41}, std::byte{0}, std::byte{0}, std::byte{0xd8}})}};
  event plain;
  plain.form = payload_form::unnamed_event_data;
  plain.data = {{"", slot::utf16("first")},
                {"", slot::utf16("")},
                {"Binary", slot::binary({std::byte{1}, std::byte{2}, std::byte{0xff}})}};
  event user;
  user.form = payload_form::user_data;
  user.filetime = ~std::uint64_t{0} / 2;
  user.data = {{"SubjectUserName", slot::utf16("anna")}, {"Count", slot::uint32(7)}};
  event bare;
  bare.form = payload_form::none;
  return log_builder().chunk({record(1, odd), record(2, plain), record(3, user), record(4, bare)});
}

// What a line of `export` says of an event, in the columns that a case has for it. Values are
// compared as a list: their names differ where the tree of the line has none for them.
constexpr const char* of_line = R"(SELECT json_extract(?1, '$.zanvik.log'),
  json_extract(?1, '$.zanvik.offset'), json_extract(?1, '$.zanvik.record'),
  coalesce(json_extract(?1, '$.Event.System.TimeCreated."#attributes".SystemTime'),
    json_extract(?1, '$.zanvik.written')),
  json_extract(?1, '$.Event.System.Channel'),
  json_extract(?1, '$.Event.System.Provider."#attributes".Name'),
  coalesce(json_extract(?1, '$.Event.System.EventID."#text"'),
    json_extract(?1, '$.Event.System.EventID')),
  json_extract(?1, '$.Event.System.Version'), json_extract(?1, '$.Event.System.Level'),
  json_extract(?1, '$.Event.System.Task'), json_extract(?1, '$.Event.System.Opcode'),
  lower(json_extract(?1, '$.Event.System.Keywords')),
  json_extract(?1, '$.Event.System.Execution."#attributes".ProcessID'),
  json_extract(?1, '$.Event.System.Execution."#attributes".ThreadID'),
  json_extract(?1, '$.Event.System.Correlation."#attributes".ActivityID'),
  json_extract(?1, '$.Event.System.Computer'),
  json_extract(?1, '$.Event.System.Security."#attributes".UserID'),
  (SELECT group_concat(key, ' ') FROM json_each(?1, '$.zanvik') WHERE type = 'true'),
  (SELECT group_concat(value) FROM (SELECT quote(atom) AS value FROM json_tree(?1, '$.Event')
    WHERE atom IS NOT NULL AND fullkey NOT LIKE '$.Event.System%' AND key <> 'xmlns' ORDER BY 1)))";
constexpr const char* of_row = R"(SELECT log, offset, record, time, channel, provider, event_id,
  version, level, task, opcode, iif(keywords IS NULL, NULL, printf('0x%x', keywords)), process_id, thread_id, activity_id,
  computer, user_sid, nullif(flag_names, ''),
  (SELECT group_concat(value) FROM (SELECT quote(atom) AS value FROM json_tree(events.data)
    WHERE atom IS NOT NULL ORDER BY 1))
FROM events WHERE id = ?1)";

TEST(case_run, rows_are_what_the_lines_of_the_same_logs_say) {
  const scratch_dir scratch;
  const std::vector<std::string> logs = {
      scratch.write("1.evtx", bytes_of_log(hostile_log())),
      scratch.write("2.evtx", bytes_of_log(security_sample())),
      scratch.write("3.evtx", bytes_of_log(system_sample())),
      scratch.write("4.evtx", bytes_of_log(odd_sample())),
      scratch.write("5.evt",
                    bytes_of_log(evt_builder().add(
                        {.record_num = 3, .event_id = 0xc0000007, .strings = {"a", "b"}}))),
  };
  const std::string output = scratch.path("case.db");
  const auto run = into_case(output, logs);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  std::vector<std::string> args = {"export"};
  args.insert(args.end(), logs.begin(), logs.end());
  sql_answers base(output);
  const auto lines = lines_of(run_zanvik(args).out);
  EXPECT_EQ(base("SELECT count(*) FROM event"), std::to_string(lines.size()) + "; ");
  EXPECT_GT(lines.size(), 90u);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(base(of_row, std::to_string(i + 1)), base(of_line, lines[i]));
  }
  EXPECT_EQ(base("PRAGMA integrity_check"), "ok; ");
}

TEST(case_run, data_are_typed_and_found_by_their_names) {
  const scratch_dir scratch;
  const std::string output = scratch.path("case.db");
  EXPECT_EQ(into_case(output, {scratch.write("a.evtx", bytes_of_log(hostile_log()))}).status, 0);
  EXPECT_EQ(answer(output, "SELECT data FROM event"),
            R"({"a\"b.c$[0]":"x'||y","Same":"1","Same_1":"2","Control":"one\r\n\ttwo\u0001",)"
            "\"Half\":\"A\xef\xbf\xbd\"}; "
            R"({"Data":["first",""],"Binary":"0102FF"}; )"
            R"({"SubjectUserName":"anna","Count":7}; {}; )");
  EXPECT_EQ(answer(output,
                   "SELECT data ->> 'Count', typeof(data ->> 'Count') FROM event "
                   "WHERE data ->> 'SubjectUserName' = 'anna'"),
            "7|integer; ");
  EXPECT_EQ(answer(output, "SELECT count(*), count(DISTINCT provider) FROM event"), "4|2; ");
}

TEST(case_run, a_log_has_its_facts_and_findings) {
  const scratch_dir scratch;
  const std::string bytes = bytes_of_log(odd_sample());
  const std::string log = scratch.write("odd\xff.evtx", bytes);
  const std::string output = scratch.path("case.db");
  EXPECT_EQ(into_case(output, {log}).status, 0);
  const std::string sum = run_zanvik({"check", "-f", "json", log}).out;
  const std::string facts =
      answer(output,
             "SELECT path, size, kind, first_time, last_time, events, findings, selection, sha256 "
             "FROM log");
  EXPECT_EQ(facts.substr(0, facts.size() - 66),
            scratch.path("odd\xef\xbf\xbd.evtx") + "|" + std::to_string(bytes.size()) +
                "|evtx|2024-06-03T10:01:00Z|2024-06-03T10:14:00Z|14|4||");
  EXPECT_NE(sum.find("\"" + facts.substr(facts.size() - 66, 64) + "\""), std::string::npos) << sum;
  EXPECT_EQ(answer(output,
                   "SELECT kind, offset, record FROM finding WHERE weight = 'finding' "
                   "ORDER BY offset LIMIT 2"),
            "number_outside|14232|9000; number_gap|14232|9000; ");
}

TEST(case_run, a_case_may_have_any_name) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  for (const std::string name : {":memory:", "file:x?mode=memory", "-wal", "a\nb%41"}) {
    const auto run = run_zanvik({"export", "-f", "sqlite", "-o" + std::string(name), log},
                                {.input = "", .folder = scratch.path("")});
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_EQ(answer(scratch.path(name), "SELECT count(*) FROM event"), "1; ") << name;
  }
}

TEST(case_run, a_log_is_in_a_case_once) {
  const scratch_dir scratch;
  const std::string output = scratch.path("case.db");
  const std::string one = scratch.write("1.evtx", small_log(1));
  const std::string copy = scratch.write("copy.evtx", small_log(1));
  const std::string two = scratch.write("2.evtx", small_log(2));
  EXPECT_EQ(into_case(output, {one}).err, "");
  const std::string before = content_of(output);

  const auto again = into_case(output, {one, copy});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.err, "zanvik: " + one + ": is in the case already\nzanvik: " + copy +
                           ": is in the case already, as " + one + "\n");
  EXPECT_EQ(into_case(output, {"--quiet", one}).err, "");
  const auto selected = into_case(output, {"--event-id", "100", one});
  EXPECT_EQ(selected.status, 1);
  EXPECT_NE(selected.err.find("another selection of its events (all)"), std::string::npos);
  EXPECT_EQ(content_of(output), before);

  EXPECT_EQ(into_case(output, {"--level", "error", two}).status, 0);
  EXPECT_EQ(answer(output, "SELECT events, selection FROM log"), "1|; 0|--level 2; ");
  const auto stream = run_zanvik({"export", "-f", "sqlite", "-o", output, "-"},
                                 {.input = small_log(3), .folder = ""});
  EXPECT_EQ(stream.status, 0) << stream.err;
  EXPECT_EQ(
      answer(output, "SELECT l.path, e.record, e.data FROM event e JOIN log l ON l.id = e.log"),
      one + "|1|{\"Text\":\"text of 1\"}; -|3|{\"Text\":\"text of 3\"}; ");
}

TEST(case_run, added_logs_make_the_same_case_as_one_run) {
  const scratch_dir scratch;
  const std::string one = scratch.write("1.evtx", bytes_of_log(security_sample()));
  const std::string two = scratch.write("2.evtx", bytes_of_log(odd_sample()));
  const std::string together = scratch.path("together.db"), added = scratch.path("added.db");
  EXPECT_EQ(into_case(together, {one, two}).status, 0);
  EXPECT_EQ(into_case(added, {one}).status, 0);
  EXPECT_EQ(into_case(added, {two}).status, 0);
  EXPECT_EQ(content_of(added), content_of(together));
  constexpr const char* indexes =
      "SELECT name FROM sqlite_schema WHERE type = 'index' AND sql <> '' "
      "ORDER BY 1";
  EXPECT_EQ(answer(together, indexes), "event_by_id; event_by_log; event_by_time; ");
  EXPECT_EQ(answer(added, indexes), answer(together, indexes));
}

// Numbers of 64 bits: SQLite has 63.
TEST(case_run, numbers_that_do_not_fit_are_kept_as_texts) {
  const scratch_dir scratch;
  const std::string output = scratch.path("case.db");
  event odd;
  odd.keywords = 0x8020000000000000;
  auto log = log_builder().chunk({record(1, odd)});
  log.poke_u32(log.record_offset(0, 0) + 12, 0xffffffff);  // the high half of the number
  (void)into_case(output, {scratch.write("a.evtx", bytes_of_log(log))});
  EXPECT_EQ(
      answer(output, "SELECT record, typeof(record), keywords = 0x8020000000000000 FROM event"),
      "0xffffffff00000001|text|1; ");
}

struct refusal_row {
  std::vector<std::string> args;
  int status;
  std::string_view said;
};

TEST(case_run, what_is_no_case_is_refused_untouched) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  const std::string other = scratch.path("other.db"), future = scratch.path("future.db"),
                    altered = scratch.path("altered.db"), sound = scratch.path("sound.db");
  answer(other, "CREATE TABLE event (id)");
  for (const std::string& path : {future, altered, sound}) {
    ASSERT_EQ(into_case(path, {scratch.write("b.evtx", small_log(2))}).status, 0);
  }
  answer(future, "PRAGMA user_version = 99");
  answer(altered, "ALTER TABLE event ADD COLUMN more DEFAULT 1");
  const std::string text = scratch.write("note.txt", "a text");
  const std::vector<std::string> files = {log, other, future, altered, text, sound};
  std::vector<std::string> before;
  for (const std::string& path : files) before.push_back(file_text(path));
  const auto with = [&log](std::vector<std::string> args) {
    args.insert(args.begin(), {"export", "-f", "sqlite"});
    args.push_back(log);
    return args;
  };
  const refusal_row rows[] = {
      {with({"-o", other}), 1, "is a database, but not a case"},
      {with({"-o", future}), 1, "is a case of version 99"},
      {with({"-o", altered}), 1, "its table event is not that of a case"},
      {with({"-o", text}), 1, "is another file, not a case"},
      {with({"-o", log}), 2, "is one of the files to read"},
      {with({"-o", scratch.path("")}), 1, "is not a file"},
      {with({"-o", scratch.path("none/case.db")}), 1, "unable to open"},
      {with({}), 2, "needs -o FILE"},
      {with({"-o", "-"}), 2, "needs -o FILE"},
      {with({"-o", sound, "--order", "time"}), 2, "ORDER BY"},
      {with({"-o", sound, "--unique"}), 2, "GROUP BY"},
      {{"export", "--full-text", log}, 2, "--full-text"},
  };
  for (const refusal_row& row : rows) {
    const auto run = run_zanvik(row.args);
    EXPECT_EQ(run.status, row.status) << row.said << run.err;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << row.said << run.err;
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_TRUE(file_text(files[i]) == before[i]) << files[i];
  }
}

// Whatever else is in the file is kept, and never run.
TEST(case_run, triggers_and_views_of_others_do_nothing) {
  const scratch_dir scratch;
  const std::string output = scratch.path("case.db");
  ASSERT_EQ(into_case(output, {scratch.write("1.evtx", small_log(1))}).status, 0);
  answer(output, "CREATE TABLE notes (text)");
  answer(output,
         "CREATE TRIGGER spoil AFTER INSERT ON event BEGIN DELETE FROM event; "
         "INSERT INTO notes VALUES ('spoilt'); END");
  const auto run = into_case(output, {scratch.write("2.evtx", small_log(2))});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(answer(output, "SELECT count(*), (SELECT count(*) FROM notes) FROM event"), "2|0; ");
}

TEST(case_run, full_text_finds_words_in_any_value) {
  const scratch_dir scratch;
  const std::string output = scratch.path("case.db");
  const std::string first = scratch.write("1.evtx", bytes_of_log(hostile_log()));
  const auto found = [&output](const std::string& what) {
    return answer(output,
                  "SELECT e.record FROM event e WHERE e.id IN (SELECT rowid FROM full_text "
                  "WHERE full_text MATCH '" +
                      what + "') ORDER BY e.id");
  };
  ASSERT_EQ(into_case(output, {first}).status, 0);
  // Asked for later, it has what was there before; and what comes after it without being asked.
  ASSERT_EQ(into_case(output, {"--full-text", scratch.write("2.evtx", small_log(8))}).status, 0);
  ASSERT_EQ(into_case(output, {scratch.write("3.evtx", small_log(9))}).status, 0);
  EXPECT_EQ(found("two"), "1; ") << "behind a line end";
  EXPECT_EQ(found("ANNA"), "3; ");
  EXPECT_EQ(found("text"), "8; 9; ");
  EXPECT_EQ(found("\"text of 9\""), "9; ");
  EXPECT_EQ(found("SubjectUserName"), "") << "names of data are not in it";
  EXPECT_EQ(answer(output,
                   "SELECT snippet(full_text, 0, '<', '>', '', 3) FROM full_text "
                   "WHERE full_text MATCH 'anna'")
                .substr(0, 6),
            "<anna>");
  EXPECT_EQ(answer(output, "INSERT INTO full_text(full_text, rank) VALUES('integrity-check', 0)"),
            "");
}

}  // namespace
}  // namespace zanvik::testing
