// One case of many, some of which somebody prepared.
#include <gtest/gtest.h>

#include "../run/program_run.h"
#include "log_builder.h"
#include "samples_builder.h"
#include "sql_answers.h"

namespace zanvik::testing {
namespace {

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

class case_merge : public ::testing::Test {
 protected:
  case_merge() {
    first_ = scratch_.write("1.evtx", bytes_of_log(security_sample()));
    second_ = scratch_.write("2.evtx", bytes_of_log(odd_sample()));
    third_ = scratch_.write("3.evtx", bytes_of_log(system_sample()));
  }
  std::string path(const std::string& name) const { return scratch_.path(name); }
  // Makes a case and returns its path.
  std::string made(const std::string& name, std::vector<std::string> args) {
    args.insert(args.begin(), {"export", "-f", "sqlite", "-o", path(name)});
    EXPECT_EQ(run_zanvik(args).status, 0);
    return path(name);
  }

  const scratch_dir scratch_;
  std::string first_, second_, third_;
};

TEST_F(case_merge, makes_what_one_run_makes) {
  const std::string one = made("one.db", {first_, second_});
  // The second log is in both, and texts that both have got other ids there.
  const std::string two = made("two.db", {"--full-text", third_, second_});
  const std::string whole = made("whole.db", {"--full-text", first_, second_, third_});
  const auto run = run_zanvik({"merge", one, two, "-o", path("all.db")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "zanvik: " + second_ + ": is in the case already\n");
  EXPECT_EQ(content_of(path("all.db")), content_of(whole));
  EXPECT_EQ(answer(path("all.db"), "PRAGMA integrity_check"), "ok; ");
  constexpr const char* words = "SELECT rowid FROM full_text WHERE full_text MATCH 'spooler'";
  EXPECT_EQ(answer(path("all.db"), words), answer(whole, words));
  EXPECT_NE(answer(whole, words), "");

  const std::string alone = made("alone.db", {first_});
  EXPECT_EQ(run_zanvik({"merge", two, "-o", alone}).status, 0) << "into a case that is there";
  EXPECT_EQ(answer(alone, "SELECT path FROM log"), first_ + "; " + third_ + "; " + second_ + "; ");
}

TEST_F(case_merge, refuses_what_is_no_case_before_anything_is_written) {
  const std::string one = made("one.db", {first_}), part = made("part.db", {"-i", "4624", first_});
  const std::string other = path("other.db"), text = scratch_.write("a.jsonl", "{}\n");
  answer(other, "CREATE TABLE log (id)");
  struct refusal_row {
    std::vector<std::string> args;
    int status;
    std::string_view said;
  };
  const refusal_row rows[] = {
      {{one, other, "-o", path("x.db")}, 1, "other.db: is a database, but not a case"},
      {{one, text, "-o", path("x.db")}, 1, "a.jsonl: is another file"},
      {{one, path("none"), "-o", path("x.db")}, 1, "none: "},
      {{one, "-o", one}, 1, "is the output too"},
      {{one}, 2, "need -o"},
  };
  for (refusal_row row : rows) {
    row.args.insert(row.args.begin(), "merge");
    const auto run = run_zanvik(row.args);
    EXPECT_EQ(run.status, row.status) << row.said << run.err;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << row.said << run.err;
    EXPECT_FALSE(std::filesystem::exists(path("x.db"))) << row.said;
  }
  const auto run = run_zanvik({"merge", one, part, "-o", path("x.db")});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("another selection of its events (all)"), std::string::npos) << run.err;
  EXPECT_EQ(content_of(path("x.db")), content_of(one));
}

struct prepared_row {
  const char* sql;
  std::string_view said;
  bool first_log_stays = true;  // what is wrong is found behind the first log
};

TEST_F(case_merge, a_case_of_a_run_that_did_not_end_is_put_right_first) {
  const std::string one = made("one.db", {first_});
  answer(one, "PRAGMA journal_mode = WAL");
  const auto run = run_zanvik({"merge", one, "-o", path("x.db")});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("left by a run that was killed"), std::string::npos) << run.err;
  (void)made("one.db", {first_});
  EXPECT_EQ(run_zanvik({"merge", one, "-o", path("x.db")}).status, 0);
}

// What somebody may do to a case, and what is said of it. Only whole logs as they were come over.
TEST_F(case_merge, prepared_cases) {
  const prepared_row rows[] = {
      {"CREATE TRIGGER t AFTER INSERT ON log BEGIN DELETE FROM log; END", ""},
      {"CREATE VIEW mine AS SELECT load_extension('x')", ""},
      {"CREATE INDEX i ON event (hex(zeroblob(9)))", ""},
      {"UPDATE event SET data = '{' WHERE log = 2", "is not as zanvik writes it"},
      {"UPDATE event SET data = '[1]' WHERE log = 2", "is not as zanvik writes it"},
      {"UPDATE event SET data = CAST(x'7b7d00' AS TEXT) WHERE log = 2", "as zanvik writes"},
      {"UPDATE event SET data = CAST(x'7b2261223a22ff227d' AS TEXT) WHERE log = 2", "as zanvik"},
      {"UPDATE event SET time = x'31' WHERE log = 2", "is not as zanvik writes it"},
      {"UPDATE event SET flags = 1.5 WHERE log = 2", "is not as zanvik writes it"},
      {"UPDATE event SET task = x'00' WHERE log = 2", "is not as zanvik writes it"},
      {"UPDATE channel SET name = CAST(x'4100' AS TEXT) WHERE name LIKE 'Fab%'", "as zanvik"},
      {"UPDATE finding SET offset = 0.5 WHERE log = 2", "a finding of"},
      {"UPDATE log SET sha256 = 'short' WHERE id = 2", "log 2 is not as zanvik writes it"},
      {"UPDATE log SET size = -1 WHERE id = 2", "log 2 is not as zanvik writes it"},
      {"UPDATE log SET events = 1 WHERE id = 2", "14 of its 1 events are there"},
      {"DELETE FROM log WHERE id = 2", "events of a log that it does not have"},
      {"UPDATE event SET log = 1 WHERE id = (SELECT max(id) FROM event)", "13 of its 14 events"},
      {"ALTER TABLE event ADD COLUMN extra DEFAULT 7", "is not that of a case", false},
      {"DROP TABLE sid; CREATE VIEW sid AS SELECT 1 AS id, 'x' AS name", "is not that of a case",
       false},
  };
  const std::string sound = made("sound.db", {first_, second_});
  const std::string first_alone = content_of(made("first.db", {first_}));
  for (const prepared_row& row : rows) {
    const std::string source = scratch_.write("prepared.db", file_text(sound));
    sql_answers(source).run(row.sql);
    std::filesystem::remove(path("out.db"));
    const std::string before = file_text(source);
    const auto run = run_zanvik({"merge", source, "-o", path("out.db")});
    EXPECT_EQ(run.status, row.said.empty() ? 0 : 1) << row.sql << run.err;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << row.sql << run.err;
    EXPECT_TRUE(file_text(source) == before) << row.sql;
    if (!row.first_log_stays) {
      EXPECT_FALSE(std::filesystem::exists(path("out.db"))) << row.sql;
      continue;
    }
    const std::string expected = row.said.empty() ? content_of(sound) : first_alone;
    EXPECT_TRUE(content_of(path("out.db")) == expected) << row.sql;
  }
}

// The ids of texts that came with a log that was left out are not used again.
TEST_F(case_merge, a_log_that_is_left_out_leaves_nothing) {
  const auto small = [this](std::uint64_t number) {
    const auto log = log_builder().chunk({record(number), record(number + 1)});
    return scratch_.write(std::to_string(number), bytes_of_log(log));
  };
  const std::string bad = made("bad.db", {small(1)}), good = made("good.db", {small(11)});
  answer(bad, "UPDATE event SET data = '{' WHERE id = 2");
  EXPECT_EQ(run_zanvik({"merge", bad, good, "-o", path("x.db")}).status, 1);
  EXPECT_EQ(content_of(path("x.db")), content_of(good));
}

// Any byte of a case may be changed, and a case may end anywhere: the merge says so or takes whole
// logs, and what it writes is sound.
TEST_F(case_merge, damaged_cases) {
  const std::string sound = file_text(made("sound.db", {second_}));
  const auto survives = [this](const std::string& bytes, std::size_t at) {
    const std::string source = scratch_.write("damaged.db", bytes);
    std::filesystem::remove(path("out.db"));
    const auto run = run_zanvik({"merge", source, "-o", path("out.db")});
    EXPECT_TRUE(run.status == 0 || run.status == 1 || run.status == 2) << at << ": " << run.status;
    EXPECT_EQ(run.err.empty(), run.status == 0) << at;
    if (!std::filesystem::exists(path("out.db"))) return;
    EXPECT_EQ(answer(path("out.db"), "PRAGMA integrity_check"), "ok; ") << at;
    EXPECT_EQ(answer(path("out.db"), "SELECT count(*) FROM event, log WHERE events <> 14"), "0; ")
        << at;
  };
  for (std::size_t at = 100; at < sound.size(); at += sound.size() / 24 + 1) {
    std::string bytes = sound;
    bytes[at] = static_cast<char>(bytes[at] ^ 0x55);
    survives(bytes, at);
  }
  for (std::size_t size = 16; size < sound.size(); size += sound.size() / 5) {
    survives(sound.substr(0, size), size);
  }
}

}  // namespace
}  // namespace zanvik::testing
