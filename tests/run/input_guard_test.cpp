// Outputs that would overwrite what the run reads: whole runs that must leave everything unchanged,
// and similar runs that must not be refused.
#include "run/input_guard.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

// A folder with a log under three names, a command file, a list of names and a text.
class evidence {
 public:
  evidence() {
    log_builder().chunk({record(1)}).write(folder.path("a.evtx"));
    EXPECT_EQ(::link(folder.path("a.evtx").c_str(), folder.path("hard.evtx").c_str()), 0);
    EXPECT_EQ(::symlink("a.evtx", folder.path("soft.evtx").c_str()), 0);
    folder.write("report", "!cmd,-enum_evtxlog,-all_data\n");
    folder.write("names", "a.evtx\n");
    folder.write("text", "earlier results");
    folder.write("b.evtx", "no log by its bytes");
  }
  std::string all() const {
    std::string text;
    for (const char* name : {"a.evtx", "report", "names", "text", "b.evtx"}) {
      text += file_text(folder.path(name)) + "|";
    }
    return text;
  }
  scratch_dir folder;
};

TEST(input_guard, inputs_are_not_written_over) {
  setenv("ZT_NAME", "a", 1);
  const std::string input = "an input of this run";
  const std::string perhaps = "an event log, which this run may read";
  const std::tuple<const char*, const char*, std::string> rows[] = {
      {"the log", "-log a.evtx -out a.evtx", input},
      {"by another spelling", "-log a.evtx -out ./a.evtx/", input},
      {"by a link", "-log a.evtx -outfile hard.evtx", input},
      {"through a link", "-log soft.evtx -out hard.evtx", input},
      {"one of several", "-log lost|a.evtx -out a.evtx", input},
      {"by reference", "-log %ZT_NAME%.evtx -out a.evtx", input},
      {"both ways", "-log a.evtx -out .\\%ZT_NAME%.evtx", input},
      {"statistics", "-log a.evtx -stats a.evtx", input},
      {"trace, which is opened first", "-diags a.evtx -log a.evtx", input},
      {"an option between", "-log -csv a.evtx -out a.evtx", input},
      {"the command file", "-log a.evtx -cmdfile report -out report", input},
      {"the names", "-pipe -out names", input},
      {"what a name may lead to", "-pipe -out a.evtx", perhaps},
      {"what a walk may find", "-enumdir ./ -stats hard.evtx", perhaps},
      {"a link is no log less", "-enumdir ./ -diags soft.evtx", perhaps},
  };
  for (const auto& [reason, args, words] : rows) {
    const evidence found;
    const std::string before = found.all();
    const std::string names = found.folder.path("names");
    const std::string command = "cd " + found.folder.path("") + " && " + ZANVIK_PROGRAM + " '" +
                                [&] {
                                  std::string quoted;
                                  for (const char c : std::string(args)) {
                                    quoted += c == ' ' ? "' '" : std::string(1, c);
                                  }
                                  return quoted;
                                }() +
                                "' <names >out 2>err";
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 255) << reason;
    EXPECT_TRUE(file_text(found.folder.path("err")).ends_with(words + ", aborting")) << reason;
    EXPECT_EQ(found.all(), before) << reason;
  }
}

TEST(input_guard, other_files_are) {
  const char* rows[] = {
      "-log a.evtx -out text",   "-log a.evtx -out new",
      "-log b.evtx -out text",   "-enumdir ./ -out text",
      "-enumdir ./ -out b.evtx", "-log a.evtx -out /dev/null",
      "-string text -out text",  "-log text",
  };
  for (const char* args : rows) {
    const evidence found;
    auto words = split(args, ' ');
    words.push_back("-quiet");
    const auto run = run_zanvik(words, {.folder = found.folder.path("")});
    EXPECT_EQ(run.status, 0) << args << run.err;
    EXPECT_EQ(run.err.find("overwrite"), run.err.npos) << args;
  }
}

}  // namespace
}  // namespace zanvik::testing
