// Whole runs of the built program: exit status and both outputs.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

const std::string head = "\"cmdline:zanvik ver: 0.65; zanvik";

TEST(driver, help_in_any_place_is_all_that_happens) {
  const scratch_dir scratch;
  const std::string usage = run_zanvik({}).err;
  EXPECT_TRUE(
      usage.starts_with("zanvik ver: 0.65\n\nUsage:\n\n  zanvik -log \"log1 | log2 | ..\"  "))
      << usage;
  EXPECT_NE(usage.find("= log2timeline output \n"), std::string::npos);
  EXPECT_NE(usage.find("= sleuthkit output \n"), std::string::npos);
  EXPECT_TRUE(usage.ends_with("= incl any records from slack as well\n\n")) << usage;
  const std::string out = scratch.path("results");
  for (const char* word : {"-h", "-HELP", "/?", "--help"}) {
    const auto run = run_zanvik({"-out", out, "-log", "a.evtx", word});
    EXPECT_EQ(run.status, 0) << word;
    EXPECT_EQ(run.err, usage) << word;
    EXPECT_EQ(run.out, "") << word;
    EXPECT_EQ(::access(out.c_str(), F_OK), -1) << word;
  }
  // The version works the same way; help takes precedence.
  const auto run = run_zanvik({"-out", out, "-string", "--VERSION", "-log", "a.evtx"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, usage.substr(0, usage.find('\n') + 1));
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(::access(out.c_str(), F_OK), -1);
  EXPECT_EQ(run_zanvik({"--version", "-h"}).err, usage);
}

TEST(driver, what_ends_a_run_before_it_starts) {
  const std::string no_log = "need to specify a log file, via the -log <event log> option";
  const std::tuple<const char*, std::string, int, std::string> rows[] = {
      {"no log", "-csv", 0, no_log},
      {"an unknown word is none", "a.evtx", 0, no_log},
      {"an option in the last place", "-log", 0, no_log},
      {"-createlog", "-createlog x -log y", 0, "Option is not available"},
      {"no folder for the statistics", "-log y -stats no/such/f", 0,
       "prob creating stats file: no/such/f, aborting"},
      {"results file", "-log a -out no/such/f", 255,
       "prob opening file no/such/f for output, aborting"},
      {"not in this build", "-sqlite x", 255, "This option is not offered in this build"},
      {"odd aliases", "-alias a", 255, "imbalanced alias to true pathfiles, aborting"},
      {"no date", "-cmd_start_time x", 255, ""},
      {"messages share a line", "-dateformat x -timeformat y", 0,
       "invalid x, using default formatinvalid y, using default format" + no_log},
  };
  for (const auto& [reason, args, status, err] : rows) {
    const scratch_dir scratch;
    const auto run = run_zanvik(split(args, ' '), {.folder = scratch.path("")});
    EXPECT_EQ(run.status, status) << reason;
    EXPECT_EQ(run.out, head + " " + args + (status == 0 ? "\"\n\n" : "\"\n")) << reason;
    EXPECT_EQ(run.err, err) << reason;
  }
  EXPECT_EQ(run_zanvik({"-log", "a b", "", "x\ty", "-quiet"}).out,
            head + " -log 'a b'  x\ty -quiet\"\n\n");
  EXPECT_EQ(run_zanvik({"-PIPE", "-quiet"}).out,
            "\"cmdline:zanvik ver: 0.65; <filelist> ... | zanvik -PIPE -quiet\"\n\n");
}

TEST(driver, results_and_statistics_begin_with_the_identification) {
  const scratch_dir scratch;
  scratch.write("r", "earlier and far longer results than the identification line of this run");
  const auto run = run_zanvik({"-log", "lost", "-out", "r", "-append", "-stats", "s", "-quiet"},
                              {.folder = scratch.path("")});
  const std::string line = head + " -log lost -out r -append -stats s -quiet\"\n";
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(file_text(scratch.path("r")), line + "\n");
  EXPECT_EQ(file_text(scratch.path("s")).substr(0, line.size()), line);
}

TEST(driver, statistics_that_cannot_be_made_are_done_without) {
  const scratch_dir scratch;
  ASSERT_EQ(::mkdir(scratch.path("s").c_str(), 0700), 0);
  const auto run =
      run_zanvik({"-log", "lost", "-stats", "s", "-quiet"}, {.folder = scratch.path("")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST(driver, run_time_goes_to_standard_error_or_to_the_trace) {
  const scratch_dir scratch;
  const run_setup setup = {.folder = scratch.path("")};
  const std::string told = run_zanvik({"-log", "lost", "-quiet", "-profile"}, setup).err;
  EXPECT_TRUE(told.starts_with("->") && told.ends_with(" secs\n")) << told;
  EXPECT_EQ(run_zanvik({"-log", "lost", "-quiet", "-diags", "t"}, setup).err, "");
  const std::string trace = file_text(scratch.path("t"));
  EXPECT_TRUE(trace.starts_with("->zanvik -log lost -quiet -diags t\n")) << trace;
  EXPECT_TRUE(trace.ends_with(" secs")) << trace;
}

// The trace names each log that is read.
TEST(driver, output_that_nobody_takes_ends_the_run_unless_there_are_statistics) {
  const scratch_dir scratch;
  const auto log = log_builder().chunk({record(1)});
  log.write(scratch.path("a.evtx"));
  log.write(scratch.path("b.evtx"));
  scratch.write("report", "!cmd,-enum_evtxlog,-all_data\n");
  const std::vector<std::string> runs[] = {
      {"-log", "a.evtx|b.evtx"},
      {"-log", "a.evtx|b.evtx", "-cmdfile", "report"},
      {"-enumdir", scratch.path("")},
  };
  for (std::vector<std::string> args : runs) {
    for (const bool statistics : {false, true}) {
      int ends[2];
      ASSERT_EQ(::pipe(ends), 0);
      ::close(ends[0]);
      args.insert(args.end(), {"-diags", "trace"});
      if (statistics) args.insert(args.end(), {"-stats", "statistics"});
      const auto run = run_zanvik(args, {.folder = scratch.path(""), .out_fd = ends[1]});
      ::close(ends[1]);
      EXPECT_EQ(run.status, 0);
      const std::string trace = file_text(scratch.path("trace"));
      for (const char* name : {"a.evtx", "b.evtx"}) {
        EXPECT_EQ(trace.find("\n->analyzing: " + std::string(name)) != trace.npos, statistics)
            << trace;
      }
    }
  }
}

TEST(driver, a_file_that_is_no_log_is_not_read_whole) {
  const scratch_dir scratch;
  constexpr std::size_t size = 1 << 30;
  const std::string path = scratch.write("a.evtx", "no log");
  std::filesystem::resize_file(path, size);  // sparse
  const pid_t child = ::fork();
  if (child == 0) {
    ::execl(ZANVIK_PROGRAM, "zanvik", "-log", path.c_str(), "-out", "/dev/null", "-quiet", nullptr);
    ::_exit(127);
  }
  int state = -1;
  struct rusage used = {};
  ASSERT_EQ(::wait4(child, &state, 0, &used), child);
  EXPECT_EQ(state, 0);
  EXPECT_LT(static_cast<std::size_t>(used.ru_maxrss) * 1024, size);
}

TEST(driver, nothing_that_is_named_as_a_log_stops_the_run) {
  const scratch_dir scratch;
  ASSERT_EQ(::mkfifo(scratch.path("fifo").c_str(), 0600), 0);
  ASSERT_EQ(::mkdir(scratch.path("folder").c_str(), 0700), 0);
  scratch.write("empty", "");
  const auto run =
      run_zanvik({"-log", "fifo|folder|empty|/dev/zero|\xff|" + std::string(9000, 'x')},
                 {.folder = scratch.path("")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out.substr(run.out.find('\n')), "\n\n");
}

}  // namespace
}  // namespace zanvik::testing
