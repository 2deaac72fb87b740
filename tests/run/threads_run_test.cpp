// Whole runs of the classic door with several threads: each gives what one thread gives, to the
// byte, on both outputs and in the statistics file.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "evt_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

using words = std::vector<std::string>;

constexpr const char* thread_counts[] = {"2", "3", "8"};

std::string sample(const std::string& name) {
  return file_text(ZANVIK_SOURCE_DIR "/samples/" + name);
}

void remove_all(std::string& text, const std::string& part) {
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos;) text.erase(at, part.size());
}

// What can be seen of a run with so many threads, without the option itself.
struct seen_run {
  int status = 0;
  std::string out, err, stats;
};

seen_run run_with(const std::string& threads, words args, const run_setup& setup) {
  args.insert(args.end(), {"-threads", threads});
  const std::string stats = setup.folder + "/stats";
  std::filesystem::remove(stats);
  const program_run run = run_zanvik(args, setup);
  seen_run seen{run.status, run.out, run.err, file_text(stats)};
  for (std::string* text : {&seen.out, &seen.stats}) remove_all(*text, " -threads " + threads);
  return seen;
}

// The chunks of the log, again and again, until it has this size.
std::string repeated(const std::string& log, std::size_t bytes) {
  constexpr std::size_t header = 4096;
  std::string result = log;
  while (result.size() < bytes) result.append(log, header);
  return result;
}

// A folder of logs of both kinds, sound, damaged, empty and large, and of files that are none.
class threads_run : public ::testing::Test {
 protected:
  threads_run() {
    const std::string security = sample("security.evtx"), system = sample("system.evtx");
    for (int i = 0; i < 40; ++i) {
      const std::string number = std::to_string(100 + i);
      write(number + " Security.evtx", i % 7 == 3 ? security.substr(0, 70000) : security);
      write(number + " System.evtx", i % 5 == 2 ? system.substr(0, 9000) : system);
      write(number + " text.evtx", "no log at all");
    }
    write("large Security.evtx", repeated(security, 10 << 20));
    evt_builder legacy;
    for (int i = 0; i < 50; ++i) legacy.add({.strings = {"a", std::to_string(i)}});
    const byte_vector& bytes = legacy.cursor().bytes();
    write("legacy.evt", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    std::sort(names_.begin(), names_.end());
    scratch_.write("commands",
                   "!cmd, -enum_evtxlog, -type, security, -id, 4624, -name, one, -pull, LogonType\n"
                   "!cmd, -enum_evtxlog, -type, nowhere, -id, 1, -name, two\nno command\n");
  }

  void write(const std::string& name, const std::string& bytes) {
    scratch_.write(name, bytes);
    names_.push_back(name);
  }

  void expect_same(const words& args, const std::string& input) {
    const run_setup setup{.input = input, .folder = scratch_.path("")};
    const seen_run one = run_with("1", args, setup);
    for (const char* threads : thread_counts) {
      const seen_run several = run_with(threads, args, setup);
      const std::string run = args[0] + ' ' + args[1] + " with " + threads + " threads";
      EXPECT_TRUE(several.out == one.out) << run << ": " << several.out.size() << " bytes, not "
                                          << one.out.size();
      EXPECT_EQ(several.err, one.err) << run;
      EXPECT_EQ(several.stats, one.stats) << run;
      EXPECT_EQ(several.status, one.status) << run;
    }
  }

  scratch_dir scratch_;
  words names_;
};

TEST_F(threads_run, gives_what_one_thread_gives) {
  std::string piped, listed;
  for (const std::string& name : names_) {
    piped += name + '\n';
    listed += (listed.empty() ? "" : "|") + name;
  }
  const words forms[] = {
      {"-csv"},
      {"-inc_slack", "-no_whitespace", "-csv", "-stats", "stats", "-hist", "LogonType"},
      {"-csvl2t", "-quiet"},
      {"-bodyfile", "-allparams", "-string", "admin"},
      {"-csvl2t", "-one_timeline", "-quiet"},
      {"-logon", "-startstop", "-pair_datetime", "-stats", "stats"},
      {"-cmdfile", "commands", "-strict", "-csv"},
  };
  for (const words& form : forms) {
    words args = form;
    args.insert(args.end(), {"-log", listed});
    expect_same(args, "");
    args = form;
    args.emplace_back("-pipe");
    expect_same(args, piped);
  }
  expect_same({"-enumdir", ".", "-filter", "*.evtx", "-csvl2t"}, "");
}

TEST_F(threads_run, has_the_header_of_a_timeline_once) {
  const words args{"-enumdir", scratch_.path(""), "-csvl2t", "-quiet"};
  const seen_run run = run_with("3", args, {.input = "", .folder = scratch_.path("")});
  const std::size_t header = run.out.find("MACB");
  ASSERT_NE(header, run.out.npos);
  EXPECT_EQ(run.out.find("MACB", header + 1), run.out.npos);
  EXPECT_GT(std::count(run.out.begin(), run.out.end(), '\n'), 1000);
}

TEST(threads, golden_runs_give_what_is_expected) {
  std::size_t runs = 0;
  for (const auto& run : std::filesystem::directory_iterator(ZANVIK_SOURCE_DIR "/tests/golden")) {
    const words args = lines_of(file_text((run.path() / "args").string()));
    const bool real = std::any_of(args.begin(), args.end(), [](const std::string& word) {
      return word.starts_with("../shared/") && !std::filesystem::exists(ZANVIK_SOURCE_DIR "/" + word);
    });
    if (real) continue;  // there are no real logs beside the source folder
    for (const char* threads : {"1", "2", "3", "8"}) {
      const seen_run seen = run_with(threads, args, {.input = "", .folder = ZANVIK_SOURCE_DIR});
      EXPECT_EQ(seen.out, file_text((run.path() / "expected").string())) << run.path();
      ++runs;
    }
  }
  EXPECT_GT(runs, 0u);
}

TEST(threads, what_is_no_number_of_them_is_noted) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a.evtx", sample("system.evtx"));
  for (const char* number : {"0", "-1", "many"}) {
    const auto run = run_zanvik({"-log", log, "-csv", "-quiet", "-strict", "-threads", number});
    EXPECT_EQ(run.err, "strict: -threads " + std::string(number) + " is no number of threads\n");
    EXPECT_EQ(run.status, 1);
  }
  EXPECT_EQ(run_zanvik({"-log", log, "-csv", "-quiet", "-strict", "-threads", "x10"}).err, "");
}

}  // namespace
}  // namespace zanvik::testing
