// zanvik report: one HTML page that shows what happened.
#include <CLI/CLI.hpp>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "report/report.h"
#include "report/report_limits.h"
#include "source/log_events.h"
#include "verbs/log_options.h"
#include "verbs/log_survey.h"
#include "verbs/output_target.h"
#include "verbs/progress_line.h"
#include "verbs/report_check.h"
#include "verbs/report_rules.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct report_options {
  log_options logs;
  std::string output;
  report_rule_options rules;
  std::string command_line;
};

class report_run : public event_sink {
 public:
  report_run(const report_options& options, std::uint64_t total_bytes)
      : options_(options),
        filter_(options.logs.conditions),
        filtering_(options.logs.conditions.any()),
        progress_(!options.logs.quiet && progress_line::has_terminal(), total_bytes) {
    head_.version = ZANVIK_VERSION;
    head_.command_line = options.command_line;
#ifdef ZANVIK_INSPECT
    head_.can_check = true;
#endif
  }

  // False, with `problem` set, if there are rules that cannot run.
  bool read_rules(std::string& problem) {
#ifdef ZANVIK_SIGMA
    if (!options_.rules.rules.empty()) {
      rules_ = make_report_rules(options_.rules, collected_, problem);
      return rules_ != nullptr;
    }
#endif
    return problem.empty();
  }

  void on_event(const event_view& event) override {
    if (filtering_ && !filter_.takes(event)) return;
    collected_.on_event(event);
    if (rules_) rules_->on_event(event);
  }

  int run(output_buffer& out) {
    log_event_reader reader(*this, options_.logs.slack);
    if (options_.logs.conditions.event_ids) {
      reader.take_event_ids(&*options_.logs.conditions.event_ids);
    }
    std::uint64_t done = 0;
    reader.on_progress = [&](std::uint64_t read) { progress_.update(done + read); };
    log_finder finder(
        [&](found_log& log) {
          read_log(log, reader);
          done += log.size;
        },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    finder.carve(options_.logs.carve.what());
    for (const std::string& path : options_.logs.paths) finder.find(path);
    if (rules_) {
      const std::string left_out = rules_->finish();
      if (!left_out.empty()) problem("rules", left_out);
    }
    collected_.finish();
    write_page(out, head_, collected_);
    if (!out.flush()) {
      report_problem(options_.output, std::strerror(out.error()));
      status_ = verb_problems;
    }
    return status_;
  }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    head_.problems.push_back(path + ": " + what);
    status_ = verb_problems;
  }

  void read_log(const found_log& log, log_event_reader& reader) {
    head_log& about = head_.logs.emplace_back();
    about.path = log.source.path;
    about.format = log.carve ? "bytes" : log.source.kind == log_kind::evt ? "evt" : "evtx";
    about.size = log.size;
#ifdef ZANVIK_INSPECT
    if (!log.is_stream) {
      check_for_report(log, report_limits::findings - findings_, about);
      findings_ += about.findings.size();
    }
#endif
    collected_.start_log();
    if (rules_) rules_->start_log();
    if (!reader.read(log)) {
      problem(log.source.path,
              reader.problem().empty() ? "a part could not be read" : reader.problem());
    }
    const report_collector::log_count& count = collected_.log_events();
    about.events = count.events;
    about.first = count.first;
    about.last = count.last;
  }

  const report_options& options_;
  event_filter filter_;
  const bool filtering_;
  progress_line progress_;
  report_collector collected_;
  std::unique_ptr<report_rules> rules_;
  report_head head_;
  std::size_t findings_ = 0;
  int status_ = verb_done;
};

int run(const report_options& options) {
  const log_survey seen = survey_logs(options.logs, options.output);
  if (!seen.output_is_input.empty()) {
    report_problem(options.output, "is one of the files to read (" + seen.output_is_input + ")");
    return verb_bad_command;
  }
  report_run work(options, seen.bytes);
  std::string problem;
  if (!work.read_rules(problem)) {
    report_problem(options.rules.rules.front(), problem);
    return verb_bad_command;
  }
  output_target target;
  if (!target.open(options.output, problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  output_buffer out(target.descriptor());
  const int status = work.run(out);
  if (!out.failed() && !target.keep(problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  return status;
}

// The arguments as a shell reads them.
std::string shell_text(int argc, char** argv) {
  std::string out = "zanvik";
  for (int i = 0; i < argc; ++i) {
    const std::string_view word = argv[i];
    const bool plain = !word.empty() && word.find_first_not_of(
                                            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWX"
                                            "YZ0123456789-_./,:=@%+") == std::string_view::npos;
    out += ' ';
    if (plain) {
      out += word;
      continue;
    }
    out += '\'';
    for (const char c : word) {
      if (c == '\'') {
        out += "'\\''";
      } else {
        out += c;
      }
    }
    out += '\'';
  }
  return out;
}

}  // namespace

int run_report(int argc, char** argv) {
  report_options options;
  CLI::App app(
      "One HTML page that shows what happened: activity by day and hour, logons, programs, "
      "changes\n"
      "of accounts, and what else examiners ask for. The page needs no network.",
      "zanvik report");
  app.add_option("-o,--output", options.output,
                 "write to this file, which gets its name when it is complete")
      ->type_name("FILE")
      ->required();
#ifdef ZANVIK_SIGMA
  app.add_option("-r,--rules", options.rules.rules,
                 "also the matches of these rules: files, or folders to the bottom")
      ->allow_extra_args(false)
      ->type_name("PATH");
  app.add_option("--min-level", options.rules.min_level, "rules of this level and above")
      ->check(CLI::IsMember({"informational", "low", "medium", "high", "critical"}))
      ->type_name("LEVEL")
      ->needs("--rules");
#endif
  add_log_options(app, options.logs);
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  if (done) return status;
  options.command_line = shell_text(argc, argv);
  return run(options);
}

}  // namespace zanvik
