// Whole runs of `zanvik export`: where events come from, where they go, and the status.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "../run/program_run.h"
#include "evt_builder.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

std::string small_log(std::uint64_t number) {
  return bytes_of_log(log_builder().chunk({record(number)}));
}

// "log record" of each line.
std::string lines_seen(const std::string& json) {
  std::string seen;
  for (std::size_t at = 0; (at = json.find("\"zanvik\":{\"log\":\"", at)) != std::string::npos;) {
    at += 17;
    seen += json.substr(at, json.find('"', at) - at) + " ";
    at = json.find("\"record\":", at) + 9;
    seen += json.substr(at, json.find(',', at) - at) + "; ";
  }
  return seen;
}

TEST(export_run, paths_of_all_kinds) {
  const scratch_dir scratch;
  const std::string folder = scratch.path("logs");
  std::filesystem::create_directories(folder + "/b/deep");
  std::ofstream(folder + "/z\xff\n.bin", std::ios::binary) << small_log(1);  // any bytes
  std::ofstream(folder + "/b/deep/y.evtx", std::ios::binary) << small_log(2);
  std::ofstream(folder + "/a.evt", std::ios::binary)
      << bytes_of_log(evt_builder().add({.record_num = 3}));
  std::ofstream(folder + "/note.evtx") << "no log";
  ASSERT_EQ(::symlink(".", (folder + "/loop").c_str()), 0);
  ASSERT_EQ(::mkfifo((folder + "/fifo").c_str(), 0600), 0);
  const auto run = run_zanvik({"export", "logs"}, {.input = "", .folder = scratch.path("")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(lines_seen(run.out),
            "logs/a.evt 3; logs/b/deep/y.evtx 2; logs/z\xef\xbf\xbd\\n.bin 1; ");

  const auto stream = run_zanvik({"export", "-"}, {.input = small_log(9), .folder = ""});
  EXPECT_EQ(lines_seen(stream.out), "- 9; ");
}

// More than two of the blocks that a log is read in.
TEST(export_run, a_long_stream_reads_like_the_file) {
  constexpr std::uint64_t chunks = 103;
  log_builder log;
  for (std::uint64_t number = 1; number <= chunks; ++number) log.chunk({record(number)});
  const std::string bytes = bytes_of_log(log);
  const scratch_dir scratch;
  const auto named = run_zanvik({"export", "-f", "xml", scratch.write("-", bytes)});
  const auto stream = run_zanvik({"export", "-f", "csv", "-"}, {.input = bytes, .folder = ""});
  EXPECT_EQ(stream.status, 0) << stream.err;
  EXPECT_EQ(std::count(stream.out.begin(), stream.out.end(), '\n'), chunks + 1);
  EXPECT_NE(named.out.find("text of 103"), std::string::npos);
  EXPECT_NE(stream.out.find("text of 103"), std::string::npos);
}

// Events are left out by a look at one slot where that is enough; the templates of some stand in
// the very records that are asked for.
TEST(export_run, event_ids_take_what_a_full_run_has_of_them) {
  const scratch_dir scratch;
  const std::string log = scratch.write(
      "a.evtx", bytes_of_log(log_builder().chunk({record(1), record(2)}).chunk({record(3)})));
  const std::string all = run_zanvik({"export", log}).out;
  const std::size_t at = all.find("\"EventID\":") + 10;
  const std::string id = all.substr(at, all.find_first_of(",}", at) - at);
  EXPECT_EQ(run_zanvik({"export", "--event-id", id, log}).out, all) << id;
  EXPECT_EQ(run_zanvik({"export", "--event-id", "!" + id, log}).out, "");
}

// A record whose size was raised over the next one, at both ends.
TEST(export_run, slack_shows_records_that_a_size_hides) {
  const scratch_dir scratch;
  auto log = log_builder().chunk({record(1), record(2), record(3)});
  const std::size_t first = log.record_offset(0, 0), last = log.record_offset(0, 2);
  const auto size = static_cast<std::uint32_t>(last - first);
  log.poke_u32(first + 4, size);
  log.poke_u32(last - 4, size);
  const std::string path = scratch.write("a.evtx", bytes_of_log(log));
  EXPECT_EQ(lines_seen(run_zanvik({"export", path}).out), path + " 1; " + path + " 3; ");
  const auto run = run_zanvik({"export", "--slack", path});
  EXPECT_EQ(lines_seen(run.out), path + " 1; " + path + " 2; " + path + " 3; ");
  EXPECT_NE(run.out.find("text of 2"), std::string::npos);
  const std::string csv = run_zanvik({"export", "--slack", "-f", "csv", path}).out;
  EXPECT_NE(csv.find("text of 2; zanvik: slack\"\n"), std::string::npos) << csv;
  EXPECT_EQ(csv.find("text of 1; zanvik"), std::string::npos) << csv;
}

// A log behind other bytes is nothing that export reads, and something that it carves.
TEST(export_run, carving_takes_files_and_streams_of_any_bytes) {
  const scratch_dir scratch;
  const std::string bytes =
      "not a log " + small_log(5) + std::string(2'000'000, 'x') + small_log(6);
  const std::string path = scratch.write("memory.dmp", bytes);
  EXPECT_EQ(run_zanvik({"export", path}).status, 1);
  const auto run = run_zanvik({"export", "--carve", path});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(lines_seen(run.out), path + " 5; " + path + " 6; ");
  EXPECT_NE(run.out.find("\"offset\":" + std::to_string(10 + 4096 + 512) + ","), std::string::npos);
  const auto stream = run_zanvik({"export", "--carve", "-"}, {.input = bytes, .folder = ""});
  EXPECT_EQ(lines_seen(stream.out), "- 5; - 6; ");
}

TEST(export_run, what_cannot_be_read_is_counted_and_the_rest_is_written) {
  constexpr std::size_t first_chunk = 4096, second_chunk = first_chunk + 65536;
  const auto builder = log_builder().chunk({record(1), record(2)}).chunk({record(3)});
  const std::string sound = bytes_of_log(builder);
  const std::size_t second_record = builder.record_offset(0, 1);
  struct damage_row {
    const char* what;
    std::function<void(std::string&)> damage;
    int status;
    const char* events;
    const char* said;
  };
  const damage_row rows[] = {
      {"nothing", [](std::string&) {}, 0, "1; 2; 3; ", ""},
      {"a chunk's signature", [](std::string& log) { log[first_chunk] = 'x'; }, 1, "3; ",
       "1 chunk cannot be read"},
      {"a record's signature", [](std::string& log) { log[first_chunk + 512] = 'x'; }, 1, "3; ",
       "2 declared records cannot be read"},
      {"the signature of a chunk's last record",
       [&](std::string& log) { log[second_record] = 'x'; }, 1, "1; 3; ",
       "1 declared record cannot be read"},
      {"the end is cut off", [](std::string& log) { log.resize(second_chunk + 600); }, 1,
       "1; 2; ", "1 chunk cannot be read"},
      {"all but the header is cut off", [](std::string& log) { log.resize(first_chunk); }, 1, "",
       "no chunk"},
      {"a chunk of zeros behind the last", [](std::string& log) { log.append(65536, '\0'); }, 0,
       "1; 2; 3; ", ""},
  };
  const scratch_dir scratch;
  for (const damage_row& row : rows) {
    std::string log = sound;
    row.damage(log);
    const std::string path = scratch.write("a.evtx", log);
    const auto run = run_zanvik({"export", path});
    EXPECT_EQ(run.status, row.status) << row.what << run.err;
    std::string seen = lines_seen(run.out);
    for (auto at = seen.find(path + " "); at != std::string::npos; at = seen.find(path + " ")) {
      seen.erase(at, path.size() + 1);
    }
    EXPECT_EQ(seen, row.events) << row.what;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << row.what << run.err;
    EXPECT_EQ(run.err.empty(), row.status == 0) << row.what << run.err;
    const auto timeline = run_zanvik({"export", "--format", "l2t", path});
    EXPECT_EQ(timeline.err, run.err) << row.what;
    EXPECT_EQ(timeline.status, row.status) << row.what;
    const auto events = static_cast<std::size_t>(std::count(seen.begin(), seen.end(), ';'));
    EXPECT_EQ(lines_of(timeline.out).size(), events + 1) << row.what;
  }
}

TEST(export_run, losses_of_a_legacy_log_are_counted_too) {
  const auto sound = evt_builder().add({}).add({}).add({}).add({}).cursor();
  struct damage_row {
    const char* what;
    std::function<void(evt_builder&)> damage;
    std::size_t events;
    const char* said;
  };
  const damage_row rows[] = {
      {"nothing", [](evt_builder&) {}, 4, ""},
      {"a size leads out of the log",
       [](evt_builder& log) { log.poke_u32(log.record_offset(1), 0x10000); }, 1,
       ": 3 declared records cannot be read"},
      {"a signature", [](evt_builder& log) { log.poke_u32(log.record_offset(1) + 4, 1); }, 3,
       ": 1 declared record cannot be read"},
      {"a signature, in a log that was copied while it was open",
       [](evt_builder& log) {
         log.poke_u32(log.record_offset(1) + 4, 1);
         log.poke_u32(36, 1);
       },
       3, ""},
  };
  const scratch_dir scratch;
  for (const damage_row& row : rows) {
    evt_builder log = sound;
    row.damage(log);
    log.write(scratch.path("a.evt"));
    for (const std::string form : {"jsonl", "bodyfile"}) {  // the second with a header
      const auto run = run_zanvik({"export", "--format", form, scratch.path("a.evt")});
      EXPECT_EQ(lines_of(run.out).size(), row.events + (form == "bodyfile" ? 1 : 0)) << row.what;
      EXPECT_NE(run.err.find(row.said), std::string::npos) << row.what << run.err;
      EXPECT_EQ(run.status, *row.said == 0 ? 0 : 1) << row.what << run.err;
    }
  }
}

TEST(export_run, lists_logs_in_a_line_each) {
  const scratch_dir scratch;
  const std::string log = small_log(1);
  const std::string path = scratch.write("a b\x1f\x7f\n.evtx", log);
  scratch.write("c.txt", "text");
  const auto run = run_zanvik({"export", "--list", scratch.path("")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, std::to_string(log.size()) + "\tevtx\t-\t" + scratch.path("a b???.evtx\n"));
}

struct status_row {
  std::vector<std::string> args;
  int status;
  std::string_view said;
};

TEST(export_run, statuses) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  const std::string text = scratch.write("a.txt", "text");
  const std::string list = scratch.write("list", log + "\n");
  const status_row rows[] = {
      {{"export", log}, 0, ""},
      {{"export", "--help"}, 0, ""},
      {{"export", log, scratch.path("none")}, 1, "none: No such file"},
      {{"export", text}, 1, "not an event log"},
      {{"export"}, 2, "PATH is required"},
      {{"export", "--evnt-id", "5", log}, 2, "did you mean --event-id?"},
      {{"export", "--event-id", "x", log}, 2, "--event-id"},
      {{"export", "--format", "yaml", log}, 2, "--format"},
      {{"export", "--from", "yesterday", log}, 2, "--from"},
      {{"export", "-o", log, log}, 2, "is one of the files"},
      {{"export", "-o", log, scratch.path(".")}, 2, "is one of the files"},
      {{"export", "--from-list", list, "-o", list}, 2, "is one of the files"},
      {{"export", "-o", scratch.path("none/x"), log}, 1, "No such file"},
      {{"export", "-o", "", log}, 2, "has to have a name"},
  };
  for (const status_row& row : rows) {
    const auto run = run_zanvik(row.args);
    EXPECT_EQ(run.status, row.status) << row.args.back() << run.err;
    EXPECT_NE(run.err.find(row.said), std::string::npos) << run.err;
    EXPECT_EQ(run.err.empty(), row.status == 0) << run.err;
  }
  EXPECT_EQ(file_text(log), small_log(1)) << "an input is never written to";
}

TEST(export_run, a_file_appears_when_it_is_whole) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  const std::string out = scratch.path("out/x.jsonl");
  std::filesystem::create_directories(scratch.path("out"));
  std::ofstream(out) << "old";
  EXPECT_EQ(run_zanvik({"export", "-o", out, log}).status, 0);
  EXPECT_EQ(lines_seen(file_text(out)), log + " 1; ");
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(scratch.path("out"))) {
    files += entry.is_regular_file();
  }
  EXPECT_EQ(files, 1u) << "nothing stays beside it";
}

TEST(export_run, a_link_stays_and_its_target_is_replaced) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  const std::string target = scratch.write("target.jsonl", "old");
  const std::string link = scratch.path("link.jsonl");
  ASSERT_EQ(::symlink("target.jsonl", link.c_str()), 0);
  EXPECT_EQ(run_zanvik({"export", "-o", link, log}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(lines_seen(file_text(target)), log + " 1; ");
}

TEST(export_run, a_file_keeps_the_rights_of_the_one_it_replaces) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", small_log(1));
  const auto rights_of = [](const std::string& path) {
    struct stat about {};
    return ::stat(path.c_str(), &about) == 0 ? about.st_mode & 07777 : 0;
  };
  const std::string old = scratch.write("old.jsonl", "old");
  for (const mode_t rights : {0600u, 0664u}) {
    ASSERT_EQ(::chmod(old.c_str(), rights), 0);
    EXPECT_EQ(run_zanvik({"export", "-o", old, log}).status, 0);
    EXPECT_EQ(rights_of(old), rights);
  }
  const mode_t before = ::umask(027);
  EXPECT_EQ(run_zanvik({"export", "-o", scratch.path("new.jsonl"), log}).status, 0);
  ::umask(before);
  EXPECT_EQ(rights_of(scratch.path("new.jsonl")), 0640u);
}

TEST(export_run, a_problem_is_one_line_whatever_the_path) {
  const auto run = run_zanvik({"export", "no\nsuch\x1b[31m"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "zanvik: no\\x0asuch\\x1b[31m: No such file or directory\n");
}

TEST(export_run, a_full_disk_is_a_problem) {
  const scratch_dir scratch;
  const int full = ::open("/dev/full", O_WRONLY);
  if (full < 0) GTEST_SKIP() << "there is no /dev/full";
  const auto run = run_zanvik({"export", scratch.write("a.evtx", small_log(1))},
                              {.input = "", .folder = "", .out_fd = full});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("No space left"), std::string::npos) << run.err;
}

// The first word decides; a log of a verb's name is no verb.
TEST(export_run, classic_options_stay_classic) {
  // A verb is the first word, in lower case; anything else is the classic door's.
  const std::string line = "\"cmdline:zanvik ver: 0.65; zanvik ";
  EXPECT_EQ(run_zanvik({"-nothing", "export"}).out, line + "-nothing export\"\n\n");
  EXPECT_EQ(run_zanvik({"Export"}).out, line + "Export\"\n\n");
  EXPECT_NE(run_zanvik({"-h"}).err.find("-log"), std::string::npos);
}

}  // namespace
}  // namespace zanvik::testing
