// zanvik check: is a log whole, was it changed, and what is each of its bytes?
#include <CLI/CLI.hpp>
#include <cstring>
#include <string>

#include "base/limits.h"
#include "base/stop_signal.h"
#include "export/output_buffer.h"
#include "inspect/forms/ledger_forms.h"
#include "inspect/inspect_log.h"
#include "source/log_finder.h"
#include "verbs/list_logs.h"
#include "verbs/log_jobs.h"
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
  unsigned threads = 0;
};

// A legacy log is held in memory as a whole; larger ones than this are one at a time.
constexpr std::uint64_t many_legacy_bytes = 16 << 20;

class check_result : public part_result {
 public:
  check_result(output_buffer& out, bool& findings) : out_(out), findings_(findings) {}

  void pass_on() override {
    out_.append(text);
    findings_ = findings_ || has_findings;
  }
  std::uint64_t waiting_bytes() const override { return text.size(); }

  std::string text;
  bool has_findings = false;

 private:
  output_buffer& out_;
  bool& findings_;
};

class check_run {
 public:
  check_run(const check_options& options, int descriptor, std::uint64_t total_bytes)
      : options_(options), out_(descriptor) {
    settings_.threads = options.threads;
    settings_.whole_logs = true;
    settings_.shows_progress = !options.logs.quiet && progress_line::has_terminal();
    settings_.total_bytes = total_bytes;
    settings_.carve = options.logs.carve.what();
  }

  int run() {
    if (options_.format == "csv") out_.append(ledger_csv_header);
    log_jobs jobs(
        settings_, [this] { return std::make_unique<worker>(*this); },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    jobs.read(options_.logs.paths);
    stopped_by_ = jobs.stopped_by();
    if (!out_.flush()) {
      const bool named = !options_.output.empty() && options_.output != "-";
      problem(named ? options_.output : "standard output", std::strerror(out_.error()));
    }
    return status_ == verb_done && findings_ ? verb_findings : status_;
  }
  bool written() const { return !out_.failed(); }
  int stopped_by() const { return stopped_by_; }

 private:
  class worker : public log_worker {
   public:
    explicit worker(check_run& run) : run_(run) {}
    std::unique_ptr<part_result> read(log_part& part, part_turn& turn) override {
      return run_.check(*part.log, turn);
    }

   private:
    check_run& run_;
  };

  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  // On any thread. Of a log that a signal cut short there is no ledger.
  std::unique_ptr<part_result> check(const found_log& log, part_turn& turn) {
    auto result = std::make_unique<check_result>(out_, findings_);
    if (log.source.kind == log_kind::evt && log.size > many_legacy_bytes) {
      (void)turn.has_come(limits::part_result_bytes);
    }
    log_ledger ledger;
    inspect_log(log, ledger);
    result->cut_short = stop_signal() != 0;
    if (result->cut_short) return result;
    result->lost.has_chunk = true;
    result->lost.unread = ledger.findings.count(finding_kind::unreadable) != 0;
    result->has_findings = ledger.findings.any_finding();
    if (options_.format == "json") {
      append_ledger_json(result->text, ledger);
    } else if (options_.format == "csv") {
      append_ledger_csv(result->text, ledger);
    } else {
      append_ledger_table(result->text, ledger, options_.table);
    }
    return result;
  }

  const check_options& options_;
  output_buffer out_;
  log_jobs::settings settings_;
  bool findings_ = false;
  int status_ = verb_done;
  int stopped_by_ = 0;
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
  return finish_run(target, work.written(), work.stopped_by(), status);
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
      ->check(output_name_problem)
      ->type_name("FILE");
  app.add_flag("-q,--quiet", options.logs.quiet, "no progress line");
  app.add_flag("--chunks", options.table.chunks, "a row for each chunk in the table");
  options.logs.carve.add_to(app);
  add_threads_option(app, options.threads);
  add_list_option(app, options.list);
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : run(options);
}

}  // namespace zanvik
