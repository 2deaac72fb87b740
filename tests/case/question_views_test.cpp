// The views of a case against the reader that the report uses.
#include <gtest/gtest.h>

#include <map>

#include "../run/program_run.h"
#include "exported_events.h"
#include "questions/question_reader.h"
#include "sql_answers.h"

namespace zanvik::testing {
namespace {

// Events that answer questions, as log text: "name: what|column|column; " for each.
class answering_sink : public event_sink {
 public:
  void on_event(const event_view& event) override {
    for (const question_match& match : reader_.matches(event)) {
      std::string& rows = answers[std::string(match.asked().name)];
      rows += match.source().what;
      for (std::size_t column = 0; column < match.columns(); ++column) {
        const std::string text(reader_.text(event, match, column));
        const code_table* const codes = match.asked().columns[column].codes;
        const std::string_view words = codes ? words_for(*codes, text) : std::string_view();
        rows += '|' + (text.empty() ? "~" : words.empty() ? text : std::string(words));
        if (codes) rows += '|' + (text.empty() ? "~" : text);
      }
      rows += "; ";
    }
  }
  std::map<std::string, std::string> answers;

 private:
  question_reader reader_;
};

// An event for each source of each question, with all data that it asks for.
log_builder answering_log() {
  log_builder log;
  std::uint64_t number = 0;
  for (const question& asked : questions()) {
    for (const question_source& source : asked.sources) {
      event made;
      made.provider = source.provider;
      made.event_id = source.event_id;
      made.user_sid = "S-1-5-18";
      std::vector<std::string> names;
      bool by_position = false;
      const auto add_names = [&](std::string_view field) {
        for (const std::string& name : split(std::string(field), '|')) {
          if (name.empty() || name[0] == '@') continue;
          by_position = by_position || name[0] == '#';
          if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
        }
      };
      for (const std::string_view field : source.fields) add_names(field);
      const std::string_view when = source.when.substr(0, source.when.find_first_of("!="));
      add_names(when);
      if (by_position) {
        made.form = payload_form::unnamed_event_data;
        for (int i = 0; i < 16; ++i)
          made.data.push_back({"", slot::utf16("x" + std::to_string(i))});
      } else {
        for (const std::string& name : names) {
          const bool fits = name == when;
          made.data.push_back({name, slot::utf16(fits ? "of a USB x" : "the " + name)});
        }
        // The first alternative of every second event has no value.
        if (!made.data.empty() && number % 2 == 0) made.data.front().value = slot::utf16("-");
      }
      log.chunk({record(++number, made)});
    }
  }
  return log;
}

TEST(question_views, answer_what_the_report_answers) {
  const scratch_dir scratch;
  std::vector<log_builder> logs = {security_sample(), system_sample(), odd_sample(),
                                   answering_log()};
  answering_sink expected;
  std::vector<std::string> args = {"export", "-f", "sqlite", "-o", scratch.path("case.db")};
  for (std::size_t i = 0; i < logs.size(); ++i) {
    const std::string bytes(reinterpret_cast<const char*>(logs[i].bytes().data()),
                            logs[i].bytes().size());
    args.push_back(scratch.write(std::to_string(i), bytes));
    log_source source;
    source.path = args.back();
    evtx_event_reader reader(expected);
    reader.set_source(source);
    own_bytes block(std::span(logs[i].bytes()).subspan(file_header_bytes));
    walk_evtx_block(block.span(), file_header_bytes, reader, {});
  }
  ASSERT_EQ(run_zanvik(args).status, 0);
  sql_answers base(scratch.path("case.db"));
  for (const question& asked : questions()) {
    const std::string name(asked.name);
    EXPECT_NE(expected.answers[name], "") << name << ": nothing to compare";
    std::string columns = "what";
    for (const question_column& column : asked.columns) {
      columns += ", \"" + std::string(column.name) + "\"";
      if (column.codes) columns += ", \"" + std::string(column.name) + "_code\"";
    }
    EXPECT_EQ(base("SELECT " + columns + " FROM " + name + " ORDER BY id"), expected.answers[name])
        << name;
  }
}

TEST(question_views, have_the_time_the_computer_and_the_log) {
  const scratch_dir scratch;
  const log_builder log = security_sample();
  const std::string path = scratch.write(
      "a.evtx", {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()});
  const std::string output = scratch.path("case.db");
  ASSERT_EQ(run_zanvik({"export", "-f", "sqlite", "-o", output, path}).status, 0);
  EXPECT_EQ(answer(output, "SELECT id, time, computer, log, time_us FROM logons LIMIT 1"),
            "1|2024-03-04T06:58:11.1234567Z|FABRIKAM-SRV01.fabrikam.example|" + path +
                "|1709535491123456; ");
}

}  // namespace
}  // namespace zanvik::testing
