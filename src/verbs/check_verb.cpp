// zanvik check: is a log whole, was it changed, and what is each of its bytes?
#include <CLI/CLI.hpp>
#include <cstring>
#include <string>

#include "export/output_buffer.h"
#include "inspect/forms/ledger_forms.h"
#include "inspect/inspect_log.h"
#include "source/log_finder.h"
#include "verbs/list_logs.h"
#include "verbs/log_options.h"
#include "verbs/log_survey.h"
#include "verbs/output_target.h"
#include "verbs/progress_line.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct check_options {
  log_options logs;  // of these, the paths, --carve and --quiet
  std::string format = "table";
  std::string output;
  table_options table;
  bool list = false;
};

class check_run {
 public:
  check_run(const check_options& options, int descriptor, std::uint64_t total_bytes)
      : options_(options),
        out_(descriptor),
        progress_(!options.logs.quiet && progress_line::has_terminal(), total_bytes) {}

  int run() {
    if (options_.format == "csv") out_.append(ledger_csv_header);
    log_finder finder(
        [this](found_log& log) { check(log); },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    finder.carve(options_.logs.carve.what());
    for (const std::string& path : options_.logs.paths) finder.find(path);
    if (!out_.flush()) {
      const bool named = !options_.output.empty() && options_.output != "-";
      problem(named ? options_.output : "standard output", std::strerror(out_.error()));
    }
    return status_ == verb_done && findings_ ? verb_findings : status_;
  }
  bool written() const { return !out_.failed(); }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  void check(const found_log& log) {
    log_ledger ledger;
    inspect_log(log, ledger);
    std::string text;
    if (options_.format == "json") {
      append_ledger_json(text, ledger);
    } else if (options_.format == "csv") {
      append_ledger_csv(text, ledger);
    } else {
      append_ledger_table(text, ledger, options_.table);
    }
    out_.append(text);
    findings_ = findings_ || ledger.findings.any_finding();
    if (ledger.findings.count(finding_kind::unreadable) != 0) {
      problem(log.source.path, "a part could not be read");
    }
    done_ += log.size;
    progress_.update(done_);
  }

  const check_options& options_;
  output_buffer out_;
  progress_line progress_;
  std::uint64_t done_ = 0;
  bool findings_ = false;
  int status_ = verb_done;
};

int run(const check_options& options) {
  if (options.list) return list_logs(options.logs.paths, options.logs.carve.what());
  const bool shows = !options.logs.quiet && progress_line::has_terminal();
  log_survey seen;
  if (shows || !options.output.empty()) seen = survey_logs(options.logs, options.output);
  if (!seen.output_is_input.empty()) {
    report_problem(options.output, "is one of the files to read (" + seen.output_is_input + ")");
    return verb_bad_command;
  }
  output_target target;
  std::string problem;
  if (!target.open(options.output, problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  check_run work(options, target.descriptor(), seen.bytes);
  const int status = work.run();
  if (work.written() && !target.keep(problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  return status;
}

}  // namespace

int run_check(int argc, char** argv) {
  check_options options;
  CLI::App app(
      "A ledger of each log: accounts for every byte, and lists what is odd with its place.\n"
      "Status 0 when all logs are whole, 4 with findings, 1 when something could not be read.",
      "zanvik check");
  add_path_options(app, options.logs, "logs, folders, disk images, or - for standard input");
  app.add_option("-f,--format", options.format, "table, json (one object per log) or csv")
      ->check(CLI::IsMember({"table", "json", "csv"}))
      ->type_name("FORM");
  app.add_option("-o,--output", options.output,
                 "write to this file, which gets its name when it is complete")
      ->type_name("FILE");
  app.add_flag("-q,--quiet", options.logs.quiet, "no progress line");
  app.add_flag("--chunks", options.table.chunks, "a row for each chunk in the table");
  options.logs.carve.add_to(app);
  add_list_option(app, options.list);
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : run(options);
}

}  // namespace zanvik
