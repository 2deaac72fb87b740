// Runs with `-strict`: what is reported, one line each on standard error, and the status; the same
// run without it reports nothing.
#include <gtest/gtest.h>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

using lines = std::vector<std::string>;

constexpr char commands[] =
    "// a comment\n"
    "\n"
    "no command\n"
    "!cmd, -enum_evtxlog, -id, four, -name, one, stray, -all_data\n"
    "!cmd, -enum_evtxlog, -type, security, -name, two, -pull\n"
    "!cmd, -enum_evtlog, -comment, three\n";

TEST(strict, reports_what_is_passed_over_in_silence) {
  const std::string no_log = " is no event log, or cannot be read";
  const auto unknown = [](const std::string& word) {
    return "\"" + word + "\" is unknown or has no effect here";
  };
  const std::tuple<const char*, std::string, lines> rows[] = {
      {"all in order", "-log|a.evtx|-csv|-eventid|100,x10", {}},
      {"the word as a value is none", "-log|a.evtx|-nonsense|-string|-strict", {}},
      {"an unknown word", "-log|a.evtx|-cvs", {unknown("-cvs")}},
      {"options without a value, or out of place",
       "-log|a.evtx|-hist|a|-allparams|-append|-out",
       {unknown("-hist"), unknown("a"), unknown("-allparams"), unknown("-append"),
        unknown("-out")}},
      {"options that do nothing",
       "-log|a.evtx|-gzip|-v|-cpu|2|-rec_id|4",
       {"option -gzip does nothing", "option -cpu does nothing", "option -v does nothing",
        "-rec_id selects nothing"}},
      {"times",
       "-log|a.evtx|-start_time|2024-01-15T00:00:00|-stop_time|13/1/2024",
       {"-start_time 2024-01-15T00:00:00 is no time (MM/DD/YYYY HH:MM:SS) and no bound",
        "-stop_time 13/1/2024 is no time (MM/DD/YYYY HH:MM:SS) and no bound"}},
      {"numbers",
       "-log|a.evtx|-eventid|100, none|-num_subdirs|z",
       {"-num_subdirs z is no number", "-eventid: none is no number"}},
      {"a date format of good length",
       "-log|a.evtx|-dateformat|yyyy-dd-mm",
       {"-dateformat yyyy-dd-mm is no format of dates"}},
      {"a form without records", "-log|a.evtx|-xml", {"this form of output writes no records"}},
      {"logs",
       "-log|a.evtx,text,lost,short.evtx",
       {"lost" + no_log, "short.evtx: the block at 4096 starts with no whole chunk and is not read",
        "text" + no_log}},
      {"a log that no report is for", "-log|a.evtx|-logon", {"a.evtx: no report is for this log"}},
      {"what is named like a log in a folder", "-enumdir|./", {"./odd.evtx" + no_log}},
      {"a command file",
       "-log|a.evtx|-cmdfile|commands",
       {"commands, line 3: neither a command nor a comment",
        "command 1 (one): -id four is no number",
        "command 1 (one): \"stray\" is unknown or has no effect",
        "command 2 (two): \"two\" is unknown or has no effect",
        "command 2 (two): no log is of its kind and type",
        "command 3 (three): no log is of its kind and type"}},
      {"one that is not there",
       "-log|a.evtx|-cmdfile|lost",
       {"command file lost cannot be read", "command file lost holds no command"}},
  };
  const scratch_dir scratch;
  const run_setup setup = {.folder = scratch.path("")};
  log_builder().chunk({record(1)}).write(scratch.path("a.evtx"));
  scratch.write("commands", commands);
  for (const auto& [reason, args, notes] : rows) {
    if (reason == std::string_view("logs")) {
      scratch.write("text", "no log");
      scratch.write("short.evtx", std::string("ElfFile\0", 8) + std::string(5000, '\0'));
    }
    if (reason == std::string_view("what is named like a log in a folder")) {
      ::unlink(scratch.path("short.evtx").c_str());
      scratch.write("odd.evtx", "no log");
    }
    auto words = split(args, '|');
    words.insert(words.begin(), "-quiet");
    const auto silent = run_zanvik(words, setup);
    EXPECT_EQ(silent.status, 0) << reason;
    EXPECT_EQ(silent.err.find("strict: "), silent.err.npos) << reason;
    if (args.find("-strict") != args.npos) continue;
    words.insert(words.begin(), "-strict");
    const auto run = run_zanvik(words, setup);
    lines expected;
    for (const std::string& note : notes) expected.push_back("strict: " + note);
    EXPECT_EQ(run.status, notes.empty() ? 0 : 1) << reason;
    EXPECT_EQ(lines_of(run.err), expected) << reason;
    EXPECT_EQ(run.out.substr(run.out.find('\n')), silent.out.substr(silent.out.find('\n')))
        << reason;
  }
}

TEST(strict, a_line_is_a_line_behind_a_message_too) {
  const auto run = run_zanvik({"-strict", "-timeformat", "q", "-quiet"});
  EXPECT_EQ(lines_of(run.err),
            (lines{"invalid q, using default format", "strict: -timeformat q is no format of times",
                   "need to specify a log file, via the -log <event log> option"}));
  EXPECT_EQ(run.status, 1);
}

}  // namespace
}  // namespace zanvik::testing
