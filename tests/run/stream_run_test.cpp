// Runs over logs whose names arrive one at a time: whole runs of the built program, and the
// handling of exceptions around each log.
#include "run/stream_run.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <sstream>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

using lines = std::vector<std::string>;

std::string text_of(const byte_vector& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A log with one record that names its computer.
std::string log_from(const std::string& computer) {
  return text_of(log_builder().chunk({record(1, {.computer = computer})}).bytes());
}

// The computers in the rows of a CSV listing of such logs, in order.
lines computers(const std::string& out) {
  lines found;
  for (auto at = out.find(",pc-"); at != out.npos; at = out.find(",pc-", at + 1)) {
    found.push_back(out.substr(at + 4, out.find(',', at + 1) - at - 4));
  }
  return found;
}

lines sorted(lines names) {
  std::sort(names.begin(), names.end());
  return names;
}

TEST(stream_run, every_good_log_on_standard_input_comes_out_in_order) {
  const scratch_dir scratch;
  scratch.write("b %4.evtx", log_from("pc-b"));
  scratch.write("a.evtx", log_from("pc-a"));
  scratch.write("\xff.evtx", log_from("pc-lost"));
  scratch.write("half.evtx", log_from("pc-half").substr(0, 9000));
  scratch.write("text", "no log at all");
  ASSERT_EQ(::mkdir(scratch.path("x.evtx").c_str(), 0700), 0);
  ASSERT_EQ(::mkfifo(scratch.path("fifo.evtx").c_str(), 0600), 0);
  const std::string names = "b %4.evtx\r\n\n\xff.evtx\nhalf.evtx\ntext\nx.evtx\nfifo.evtx\nlost\n" +
                            std::string(5000, 'y') + "\n" + std::string(1, '\0') +
                            "a.evtx\n/\na.evtx\na.evtx";
  const auto run =
      run_zanvik({"-pipe", "-quiet", "-csv"}, {.input = names, .folder = scratch.path("")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(computers(run.out), (lines{"b", "a", "a"}));
  EXPECT_EQ(run.err, "");
}

TEST(stream_run, every_good_log_in_a_folder_comes_out) {
  const scratch_dir scratch;
  ASSERT_EQ(::mkdir(scratch.path("x.evtx").c_str(), 0700), 0);
  ASSERT_EQ(::mkfifo(scratch.path("fifo.evtx").c_str(), 0600), 0);
  ASSERT_EQ(::symlink(".", scratch.path("loop.evtx").c_str()), 0);
  scratch.write("a b%4.evtx", log_from("pc-a"));
  scratch.write("empty.evtx", "");
  scratch.write("x.evtx/b", log_from("pc-b"));
  const std::string folder = scratch.path("");
  const auto found = [&](lines args) {
    args.insert(args.begin(), {"-enumdir", folder, "-quiet", "-csv"});
    return sorted(computers(run_zanvik(args).out));
  };
  EXPECT_EQ(found({}), lines{"a"});
  EXPECT_EQ(found({"-num_subdirs", "1"}), (lines{"a", "b"}));
  EXPECT_EQ(found({"-num_subdirs", "1", "-filter", "b"}), lines{"b"});
  EXPECT_EQ(found({"-num_subdirs", "1", "-filter", "/x.EVTX"}), lines{"b"});
  EXPECT_EQ(found({"-num_subdirs", "1", "-filter_sig", "45 6c 66|0"}), (lines{"a", "b"}));
  EXPECT_EQ(found({"-num_subdirs", "1", "-filter_sig", "45 6c 66|1"}), lines{});
  EXPECT_EQ(found({"-cmd_stop_time", "2001-01-01"}), lines{});
  EXPECT_EQ(found({"-cmd_start_time", "2001-01-01"}), lines{"a"});
}

TEST(stream_run, names_on_standard_input_win_over_a_folder_and_have_no_window) {
  const scratch_dir scratch;
  const std::string a = scratch.write("a.evtx", log_from("pc-a"));
  const std::string b = scratch.write("b.evtx", log_from("pc-b"));
  const auto run = run_zanvik({"-enumdir", scratch.path(""), "-pipe", "-quiet", "-csv", "-log", a,
                               "-cmd_stop_time", "2001-01-01", "-filter", "b.evtx"},
                              {.input = a + "\n" + b + "\n"});
  EXPECT_EQ(computers(run.out), lines{"b"});
}

// What is kept from one log to the next is knowledge, never content.
TEST(stream_run, logs_come_out_together_as_each_alone) {
  const std::string samples = std::string(ZANVIK_SOURCE_DIR) + "/samples/";
  const lines logs{samples + "security.evtx", samples + "odd.evtx", samples + "system.evtx",
                   samples + "security.evtx"};
  for (const lines& form : {lines{"-csv"}, lines{}, lines{"-csv", "-inc_slack"},
                            lines{"-csv", "-logon", "-pw", "-startstop"}}) {
    const auto listing = [&form](const std::string& names) {
      lines args = form;
      args.insert(args.begin(), {"-pipe", "-quiet"});
      return run_zanvik(args, {.input = names}).out;
    };
    const std::string head = listing("");
    std::string alone = head;
    std::string names;
    for (const std::string& log : logs) {
      alone += listing(log).substr(head.size());
      names += log + "\n";
    }
    EXPECT_GT(alone.size(), head.size() + 1000);
    EXPECT_EQ(listing(names), alone) << form.size();
  }
}

TEST(stream_run, a_name_that_is_there_is_no_reference) {
  setenv("ZT_NAME", "b", 1);
  const scratch_dir scratch;
  scratch.write("%ZT_NAME%.evtx", log_from("pc-a"));
  const std::string walked = run_zanvik({"-enumdir", scratch.path(""), "-csv", "-quiet"}).out;
  EXPECT_EQ(computers(walked), lines{"a"});
  const std::string name = scratch.path("%ZT_NAME%.evtx") + "\n";
  EXPECT_EQ(computers(run_zanvik({"-pipe", "-csv", "-quiet"}, {.input = name}).out), lines{"a"});
  ::unlink(scratch.path("%ZT_NAME%.evtx").c_str());
  scratch.write("b.evtx", log_from("pc-b"));
  EXPECT_EQ(computers(run_zanvik({"-pipe", "-csv", "-quiet"}, {.input = name}).out), lines{"b"});
}

TEST(stream_run, tells_which_log_it_is_at) {
  const scratch_dir scratch;
  const std::string name = std::string(20, 'n') + "%41%" + std::string(40, 'm');
  const std::string path = scratch.write(name, log_from("pc-a"));
  scratch.write("none", "");
  const std::string trace = scratch.path("trace");
  EXPECT_EQ(run_zanvik({"-enumdir", scratch.path(""), "-diags", trace}).err,
            "analyzing: " + name + "processed log " + path);
  EXPECT_NE(file_text(trace).find("\n->analyzing: " + name + "\n"), std::string::npos);
}

TEST(stream_run, an_exception_costs_one_log) {
  const scratch_dir scratch;
  const std::string a = scratch.write("a.evtx", log_from("pc-a"));
  const std::string b = scratch.write("b.evtx", log_from("pc-b"));
  evt_output_options options;
  options.walk.enum_dir = scratch.path("");
  options.show_status = false;
  options.trace.open("/dev/full");  // a trace that fails at each line, with an exception
  options.trace.diag_stream->exceptions(std::ios::badbit);
  ::testing::internal::CaptureStderr();
  std::ostringstream results;
  log_run run(options, results);
  run_stream(run);
  const std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(err.find("exception caught on file " + a), std::string::npos) << err;
  EXPECT_NE(err.find("exception caught on file " + b), std::string::npos) << err;
  EXPECT_EQ(run.logs.size(), 1u) << "one log at a time";
}

}  // namespace
}  // namespace zanvik::testing
