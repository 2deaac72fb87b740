// Runs that are killed: what they leave is sound, has whole logs, and is completed by the next run.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <random>

#include "../run/program_run.h"
#include "log_builder.h"
#include "sql_answers.h"

namespace zanvik::testing {
namespace {

constexpr int logs = 40;
constexpr std::uint64_t events_per_log = 3;

void write_logs(const scratch_dir& scratch) {
  std::filesystem::create_directories(scratch.path("logs"));
  for (std::uint64_t i = 1; i <= logs; ++i) {
    chunk_builder chunk;
    for (std::uint64_t n = 0; n < events_per_log; ++n) chunk.add(record(10 * i + n));
    const auto log = log_builder().chunk(chunk);
    (void)scratch.write("logs/" + std::to_string(100 + i) + ".evtx",
                        {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()});
  }
}

off_t size_of(const std::string& path) {
  struct stat about {};
  return ::stat(path.c_str(), &about) == 0 ? about.st_size : 0;
}

// Starts the run, waits until the file is as large as that, and kills it. Returns
// whether it was still at work.
bool run_and_kill(const std::vector<std::string>& args, const std::string& watched, off_t size) {
  std::vector<std::string> words = args;
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    redirect(STDERR_FILENO, "/dev/null", O_WRONLY);
    ::alarm(60);
    ::execv(ZANVIK_PROGRAM, argv.data());
    ::_exit(127);
  }
  int state = 0;
  while (size_of(watched) < size) {
    if (::waitpid(child, &state, WNOHANG) == child) return false;
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, &state, 0);
  return WIFSIGNALED(state);
}

TEST(case_kill, a_killed_run_leaves_whole_logs_and_the_next_one_goes_on) {
  const scratch_dir scratch;
  write_logs(scratch);
  const std::string folder = scratch.path("logs");
  const std::string output = scratch.path("case.db"), whole = scratch.path("whole.db");
  const std::vector<std::string> args = {"zanvik", "export", "-f",   "sqlite",
                                         "-q",     "-o",     output, folder};
  std::mt19937 random(7);
  int killed = 0;
  for (int round = 0; round < 12; ++round) {
    // By turns when the file beside the case grows, and when the case itself does.
    const std::string watched = round % 2 == 0 ? output + "-wal" : output;
    const off_t more = static_cast<off_t>(random() % 40) * 1024 + 1;
    killed += run_and_kill(args, watched, size_of(watched) + more);
    EXPECT_EQ(answer(output, "PRAGMA integrity_check"), "ok; ") << round;
    // A run that was killed before it made the tables leaves an empty file.
    if (answer(output, "SELECT count(*) FROM sqlite_schema") == "0; ") continue;
    EXPECT_EQ(
        answer(output, "SELECT path FROM log WHERE events <> " + std::to_string(events_per_log) +
                           " OR events <> (SELECT count(*) FROM event WHERE log = log.id)"),
        "")
        << round;
    EXPECT_EQ(answer(output, "SELECT count(*) FROM event WHERE log NOT IN (SELECT id FROM log)"),
              "0; ")
        << round;
  }
  EXPECT_GT(killed, 0);
  EXPECT_EQ(run_zanvik({args.begin() + 1, args.end()}).status, 0);
  EXPECT_EQ(run_zanvik({"export", "-f", "sqlite", "-o", whole, folder}).status, 0);
  EXPECT_EQ(answer(output, "SELECT count(*) FROM log"), std::to_string(logs) + "; ");
  EXPECT_EQ(content_of(output), content_of(whole));
}

}  // namespace
}  // namespace zanvik::testing
