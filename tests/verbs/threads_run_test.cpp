// Whole runs of the verbs with several threads: each gives what one thread gives, to the byte, on
// both outputs and in its status; and runs that a signal stops.
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "../run/program_run.h"
#include "evt_builder.h"

namespace zanvik::testing {
namespace {

using words = std::vector<std::string>;

constexpr const char* thread_counts[] = {"2", "3", "8"};

std::string sample(const std::string& name) {
  return file_text(ZANVIK_SOURCE_DIR "/samples/" + name);
}

// The chunks of the log, again and again, until it has this size; each third block has a chunk that
// cannot be read.
std::string large_log(const std::string& log, std::size_t bytes) {
  constexpr std::size_t header = 4096, block = 50 * 65536;
  std::string result = log;
  while (result.size() < bytes) result.append(log, header);
  result.resize(header + (result.size() - header) / 65536 * 65536);
  for (std::size_t at = header + 65536; at < result.size(); at += 3 * block) result[at] = 'x';
  return result;
}

// The seconds that hunt --stats tells are those of one run.
std::string without_seconds(const std::string& text) {
  std::string out;
  for (const std::string& line : lines_of(text)) {
    if (!line.starts_with("seconds ")) out += line + '\n';
  }
  return out;
}

// A folder of logs of both kinds, sound, damaged and empty, and of files that are none.
class threads_verbs : public ::testing::Test {
 protected:
  threads_verbs() {
    const std::string security = sample("security.evtx"), system = sample("system.evtx");
    for (int i = 0; i < 9; ++i) {
      const std::string number = std::to_string(100 + i);
      scratch_.write(number + "a", i % 7 == 3 ? security.substr(0, 70000) : security);
      scratch_.write(number + "b", i % 5 == 2 ? system.substr(0, 9000) : system);
      scratch_.write(number + "c", i % 3 == 0 ? "no log at all" : sample("sysmon.evtx"));
    }
    scratch_.write("150", large_log(security, 8 << 20));
    evt_builder legacy;
    for (int i = 0; i < 50; ++i) legacy.add({.strings = {"a", std::to_string(i)}});
    const byte_vector& bytes = legacy.cursor().bytes();
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    scratch_.write("151", text);
    scratch_.write("152", text.substr(0, text.size() / 2));
    std::ofstream(scratch_.path("153")) << std::string(100, '\0') << security.substr(4096);
  }

  void expect_same(words args, const std::string& input = "") {
    args.insert(args.end(), {"none", "."});  // the first of these is not there
    const run_setup setup{.input = input, .folder = scratch_.path("")};
    words with = args;
    with.insert(with.end(), {"--threads", "1"});
    const program_run one = run_zanvik(with, setup);
    EXPECT_EQ(one.status, 1) << args[0];
    EXPECT_GT(one.out.size(), 1000u) << one.err;
    for (const char* threads : thread_counts) {
      with.back() = threads;
      const program_run several = run_zanvik(with, setup);
      std::string run = std::string("with ") + threads + " threads:";
      for (const std::string& word : args) run += ' ' + word;
      EXPECT_TRUE(several.out == one.out)
          << run << ": " << several.out.size() << " bytes, not " << one.out.size();
      EXPECT_EQ(without_seconds(several.err), without_seconds(one.err)) << run;
      EXPECT_EQ(several.status, one.status) << run;
    }
  }

  scratch_dir scratch_;
};

TEST_F(threads_verbs, exports_are_those_of_one_thread) {
  for (const char* form : {"jsonl", "xml", "csv", "timesketch", "elastic", "l2t", "bodyfile"}) {
    expect_same({"export", "--format", form});
  }
  expect_same({"export", "-"}, large_log(sample("system.evtx"), 4 << 20));
  expect_same({"export", "--slack", "--event-id", "4624", "--contains", "a"});
  expect_same({"export", "--order", "time", "--memory", "1M"});
  expect_same({"export", "--order", "time", "--unique", "--memory", "1M", "--format", "csv"});
}

TEST_F(threads_verbs, carving_and_ledgers_are_those_of_one_thread) {
  if (run_zanvik({"check", "--help"}).status != 0) GTEST_SKIP() << "built without check";
  expect_same({"export", "--carve", "-"}, "x" + sample("system.evtx"));
  for (const char* form : {"table", "json", "csv"}) expect_same({"check", "--format", form});
}

TEST_F(threads_verbs, hunts_are_those_of_one_thread) {
  if (run_zanvik({"hunt", "--help"}).status != 0) GTEST_SKIP() << "built without hunt";
  const words hunt{"hunt", "--rules", ZANVIK_SOURCE_DIR "/examples/rules"};
  const auto with = [&hunt](const words& more) {
    words args = hunt;
    args.insert(args.end(), more.begin(), more.end());
    return args;
  };
  expect_same(with({"--stats"}));
  expect_same(with({"--details"}));
  expect_same(with({"--format", "jsonl"}));
  expect_same(with({"--format", "timesketch", "--memory", "1M"}));
  expect_same(with({"--format", "csv", "--unique", "--order", "time", "--memory", "1M"}));
}

TEST(threads, are_a_number_that_makes_sense) {
  for (const char* number : {"0", "257", "-1", "two"}) {
    const program_run run = run_zanvik({"export", "--threads", number, "log"});
    EXPECT_EQ(run.status, 2) << number;
    EXPECT_NE(run.err.find("--threads"), std::string::npos) << run.err;
  }
}

// A run that reads `-` while that brings nothing more, until a signal comes.
class stopped_run {
 public:
  stopped_run(const words& args, const std::string& input, const scratch_dir& scratch)
      : scratch_(scratch) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    std::string name = "zanvik";
    words all = args;
    std::vector<char*> argv{name.data()};
    for (std::string& word : all) argv.push_back(word.data());
    argv.push_back(nullptr);
    child_ = ::fork();
    if (child_ == 0) {
      redirect(STDIN_FILENO, "", O_RDONLY, ends[0]);
      ::close(ends[0]);
      ::close(ends[1]);
      redirect(STDOUT_FILENO, scratch.path("out"), O_CREAT | O_WRONLY | O_TRUNC);
      redirect(STDERR_FILENO, scratch.path("err"), O_CREAT | O_WRONLY | O_TRUNC);
      ::alarm(60);
      ::execv(ZANVIK_PROGRAM, argv.data());
      ::_exit(127);
    }
    ::close(ends[0]);
    input_ = ends[1];
    // More than a pipe holds: when all is written, the run has begun to read.
    for (std::size_t done = 0; done < input.size();) {
      const ssize_t wrote = ::write(input_, input.data() + done, input.size() - done);
      if (wrote <= 0) break;
      done += static_cast<std::size_t>(wrote);
    }
  }

  program_run stop(int signal) {
    ::kill(child_, signal);
    // A signal that comes between the look at the flag and the read is seen when the input ends.
    pollfd ended{input_, 0, 0};
    (void)::poll(&ended, 1, 2000);  // until nobody reads any more
    ::close(input_);
    int state = 0;
    ::waitpid(child_, &state, 0);
    const int status = WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
    return {status, file_text(scratch_.path("out")), file_text(scratch_.path("err"))};
  }

 private:
  const scratch_dir& scratch_;
  pid_t child_ = -1;
  int input_ = -1;
};

TEST(stopped, a_run_writes_what_is_complete_and_says_where_it_ends) {
  const scratch_dir scratch;
  const std::string log = scratch.write("log", sample("system.evtx"));
  const std::string input = large_log(sample("security.evtx"), 1 << 20);
  const std::string whole = run_zanvik({"export", log}).out;
  for (const char* threads : {"1", "3"}) {
    stopped_run on_output({"export", log, "-", log, "--threads", threads}, input, scratch);
    const program_run run = on_output.stop(SIGINT);
    EXPECT_EQ(run.status, 128 + SIGINT) << run.err;
    EXPECT_EQ(run.err, "zanvik: the output: stopped by SIGINT; the results end here\n");
    EXPECT_TRUE(run.out == whole) << run.out.size();

    const std::string file = scratch.write("file", "an earlier result");
    stopped_run in_file({"export", log, "-", "--order", "time", "-o", file, "--threads", threads},
                        input, scratch);
    const program_run kept = in_file.stop(SIGTERM);
    EXPECT_EQ(kept.status, 128 + SIGTERM) << kept.err;
    EXPECT_EQ(kept.err,
              "zanvik: " + file + ".incomplete: stopped by SIGTERM; the results end here\n");
    EXPECT_EQ(file_text(file), "an earlier result");
    EXPECT_EQ(file_text(file + ".incomplete"), run_zanvik({"export", log, "--order", "time"}).out);
  }
}

TEST(stopped, a_signal_that_the_caller_ignores_is_ignored) {
  const scratch_dir scratch;
  const std::string input = large_log(sample("security.evtx"), 1 << 20);
  const auto before = std::signal(SIGINT, SIG_IGN);
  stopped_run run({"export", "-"}, input, scratch);
  std::signal(SIGINT, before);
  const program_run done = run.stop(SIGINT);
  EXPECT_EQ(done.status, run_zanvik({"export", "-"}, {.input = input}).status);
  EXPECT_EQ(done.out, run_zanvik({"export", "-"}, {.input = input}).out);
}

}  // namespace
}  // namespace zanvik::testing
