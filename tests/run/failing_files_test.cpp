// Files and outputs that fail while the program uses them.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

// Chunks of two records.
std::string written_log(const scratch_dir& scratch, unsigned chunks = 3) {
  log_builder log;
  for (unsigned i = 0; i < chunks; ++i) log.chunk({record(2 * i + 1), record(2 * i + 2)});
  const std::string path = scratch.path("a.evtx");
  log.write(path);
  return path;
}

// The first column of each row: numbers of records.
std::string numbers_in(const std::string& out) {
  std::string numbers;
  for (std::size_t at = 0; at < out.size(); at = std::min(out.find('\n', at), out.size() - 1) + 1) {
    const std::size_t comma = out.find(',', at);
    if (out[at] >= '0' && out[at] <= '9') numbers += out.substr(at, comma - at) + " ";
  }
  return numbers;
}

TEST(failing_files, what_can_be_read_of_a_log_comes_out_without_a_word) {
  const scratch_dir scratch;
  const std::string log = written_log(scratch);
  const std::size_t second = 4096 + 65536;
  const struct {
    const char* reads;
    std::size_t offset;
    const char* expected;
    unsigned chunks = 3;
  } rows[] = {
      {"end", 0, ""},
      {"end", second + 60000, "1 2 "},
      {"end", second + 65536, "1 2 3 4 "},
      {"error", 0, ""},
      {"error", 4096, ""},
      {"error", second + 1, "1 2 "},
      {"error", second + 65536 + 65535, "1 2 3 4 "},
      {"error", second + 2 * 65536, "1 2 3 4 5 6 "},
      {"bad", second + 512, "1 2 101 102 ", 51},  // the rest is in the next block
  };
  ::setenv("LD_PRELOAD", ZANVIK_FAILING_READS, 1);
  ::setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reads + std::string(" ") + std::to_string(row.offset));
    written_log(scratch, row.chunks);
    ::setenv("ZANVIK_TEST_READS", (row.reads + std::to_string(row.offset)).c_str(), 1);
    const program_run run = run_zanvik({"-log", log, "-csv", "-quiet"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(numbers_in(run.out), row.expected);
  }
  ::unsetenv("LD_PRELOAD");
  ::unsetenv("ASAN_OPTIONS");
  ::unsetenv("ZANVIK_TEST_READS");
}

// By name: one that was removed, one that is a circle of links, one that fails at its first byte, a
// folder. In a folder: links stand for files that were removed after they were listed.
TEST(failing_files, a_log_that_went_away_costs_itself_alone) {
  const scratch_dir scratch;
  const std::string log = written_log(scratch);
  ASSERT_EQ(::symlink("gone", scratch.path("b.evtx").c_str()), 0);
  ASSERT_EQ(::symlink("c.evtx", scratch.path("c.evtx").c_str()), 0);
  std::string names = scratch.path("gone") + "\n" + scratch.path("c.evtx") + "\n/proc/self/mem\n";
  names += scratch.path("") + "\n" + log + "\n";
  const program_run piped = run_zanvik({"-pipe", "-csv", "-quiet"}, {.input = names});
  const program_run walked = run_zanvik({"-enumdir", scratch.path(""), "-csv", "-quiet"});
  for (const program_run& run : {piped, walked}) {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(numbers_in(run.out), "1 2 3 4 5 6 ");
  }
}

TEST(failing_files, results_that_are_cut_short_are_told_of) {
  const scratch_dir scratch;
  const std::string log = written_log(scratch);
  const struct {
    std::vector<std::string> options;
    const char* told;
  } rows[] = {
      {{"-out", "/dev/full"},
       "prob writing results: /dev/full, they are cut short: No space left on device"},
      {{"-stats", "/dev/full"}, "prob writing stats file: /dev/full"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> args = {"-log", log, "-csv", "-quiet"};
    args.insert(args.end(), row.options.begin(), row.options.end());
    const program_run run = run_zanvik(args);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, row.told);
  }
  const int full = ::open("/dev/full", O_WRONLY);
  const program_run run = run_zanvik({"-log", log, "-quiet"}, {.out_fd = full});
  ::close(full);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err,
            "prob writing results: standard output, they are cut short: No space left on device");
}

// A file may have 700 bytes: its content is the start of what a whole run writes.
TEST(failing_files, a_limit_on_the_size_of_files_is_a_full_disk) {
  const scratch_dir scratch;
  const std::string log = written_log(scratch);
  const std::vector<std::string> args = {"-log", log, "-csv", "-quiet", "-out", scratch.path("r")};
  ASSERT_EQ(run_zanvik(args).status, 0);
  const std::string whole = file_text(scratch.path("r"));
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit few = {700, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &few), 0);
  const program_run run = run_zanvik(args);
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.err.find("File too large"), std::string::npos) << run.err;
  ASSERT_GT(whole.size(), 700u);
  EXPECT_EQ(file_text(scratch.path("r")), whole.substr(0, 700));
}

// As with `| head`: the reader takes a little and exits; there is no message.
TEST(failing_files, a_reader_that_goes_is_no_error) {
  const scratch_dir scratch;
  log_builder log;
  for (int chunk = 0; chunk < 8; ++chunk) {
    chunk_builder records;
    for (std::uint64_t i = 1; i <= 100; ++i) records.add(record(i));
    log.chunk(records);
  }
  log.write(scratch.path("a.evtx"));
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  char taken[10] = {};
  std::thread reader([&] {
    EXPECT_EQ(::read(ends[0], taken, sizeof(taken)), std::ssize(taken));
    ::close(ends[0]);
  });
  ASSERT_EQ(::fcntl(ends[0], F_SETFD, FD_CLOEXEC), 0);
  const program_run run =
      run_zanvik({"-log", scratch.path("a.evtx"), "-quiet"}, {.out_fd = ends[1]});
  reader.join();
  ::close(ends[1]);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(std::string(taken, sizeof(taken)), "\"cmdline:z");
}

// While it waits for names. What it holds back is lost; what was written ends with a whole line.
TEST(failing_files, signals_end_the_run) {
  const scratch_dir scratch;
  for (const int signal : {SIGINT, SIGTERM}) {
    int names[2];
    ASSERT_EQ(::pipe(names), 0);
    const std::string results = scratch.path(std::to_string(signal));
    const pid_t child = ::fork();
    if (child == 0) {
      ::dup2(names[0], STDIN_FILENO);
      ::signal(signal, SIG_DFL);  // a shell's background jobs ignore signals from the keyboard
      ::alarm(60);
      ::execl(ZANVIK_PROGRAM, "zanvik", "-pipe", "-quiet", "-out", results.c_str(), nullptr);
      ::_exit(127);
    }
    std::string written;
    for (int i = 0; i < 500 && !written.ends_with("\n\n"); ++i) {
      ::usleep(10000);
      written = file_text(results);
    }
    EXPECT_TRUE(written.ends_with("\n\n")) << written;
    ::kill(child, signal);
    int state = 0;
    ::waitpid(child, &state, 0);
    EXPECT_TRUE(WIFSIGNALED(state) && WTERMSIG(state) == signal) << state;
    EXPECT_EQ(file_text(results), written);
    ::close(names[0]);
    ::close(names[1]);
  }
}

}  // namespace
}  // namespace zanvik::testing
