// zanvik hunt: events that Sigma rules match.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/fileio.h"
#include "base/text.h"
#include "sigma/correlation.h"
#include "sigma/rule_matches.h"
#include "sigma/sigma.h"
#include "verbs/hunt_options.h"
#include "verbs/hunt_worker.h"
#include "verbs/log_survey.h"
#include "verbs/output_target.h"
#include "verbs/progress_line.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

using clock = std::chrono::steady_clock;
double seconds_since(clock::time_point start) {
  return std::chrono::duration<double>(clock::now() - start).count();
}

class hunt_run {
 public:
  hunt_run(const hunt_options& options, int descriptor, std::uint64_t total_bytes)
      : options_(options),
        out_(descriptor),
        total_bytes_(total_bytes) {}

  int run() {
    const auto start = clock::now();
    if (!read_rules()) return verb_bad_command;
    seconds_reading_ = seconds_since(start);
    if (output_is_input()) return verb_bad_command;
    if (options_.list) {
      std::string text;
      sigma::append_rule_list(set_, text);
      out_.append(text);
      return finish(false);
    }
    if (set_.running() == 0) {
      report_problem(options_.rules.front(), "no rule runs; --list says why");
      return verb_bad_command;
    }
    matches_ = std::make_unique<sigma::rule_matches>(set_);
    correlator_ = std::make_unique<sigma::correlator>(set_);
    if (!options_.format.empty() || options_.details) {
      const match_output_options form{options_.format, options_.form,
                                      options_.order.by_time(usually_by_time(options_.format)),
                                      options_.order.sorting};
      form_ = std::make_unique<match_form>(form, set_);
      lines_ = std::make_unique<match_output>(*form_, out_);
      lines_->begin();
    }
    hunt();
    report_correlations();
    tell_given_up();
    if (lines_) {
      lines_->end();
      if (!lines_->error().empty()) problem("sorting", lines_->error());
    }
    std::string text;
    if (options_.format.empty()) matches_->append_table(text);
    out_.append(text);
    if (options_.stats) write_stats();
    return finish(matches_->total() != 0);
  }
  bool written() const { return !out_.failed(); }
  int stopped_by() const { return stopped_by_; }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  bool read_rules() {
    sigma::log_source_table sources;
    std::string error;
    if (!options_.log_sources.empty()) error = read_log_sources(sources);
    if (error.empty()) error = sigma::load_rules(options_.rules, options_.choice, sources, set_);
    if (!error.empty()) std::fprintf(stderr, "zanvik: %s\n", printable_name(error).c_str());
    for (const std::string& message : set_.messages) {
      std::fprintf(stderr, "zanvik: %s\n", message.c_str());
    }
    return error.empty();
  }

  // Whether the output would take the place of a rule.
  bool output_is_input() const {
    std::error_code ignored;
    if (options_.output.empty() || !std::filesystem::exists(options_.output, ignored)) return false;
    const auto is_output = [&](const std::string& file) {
      if (!std::filesystem::equivalent(options_.output, file, ignored)) return false;
      report_problem(options_.output, "is one of the files to read (" + file + ")");
      return true;
    };
    return is_output(options_.log_sources) ||
           std::any_of(set_.rules.begin(), set_.rules.end(),
                       [&](const auto& known) { return is_output(known.content.file); });
  }

  std::string read_log_sources(sigma::log_source_table& sources) const {
    std::vector<std::byte> bytes;
    if (!uni::read_file_head(bytes, options_.log_sources, 1 << 20)) {
      return options_.log_sources + ": cannot be read";
    }
    std::size_t line = 0;
    const std::string error =
        sources.add({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, line);
    return error.empty() ? error : options_.log_sources + ":" + std::to_string(line) + ": " + error;
  }

  void hunt() {
    sigma::compiled_rules& rules = compiled_.emplace(set_);
    hunt_work work{options_.logs, set_,         rules,  form_.get(),
                   *matches_,     *correlator_, counts_, lines_.get()};
    const auto start = clock::now();
    log_jobs::settings settings;
    settings.threads = options_.threads;
    settings.shows_progress = !options_.logs.quiet && progress_line::has_terminal();
    settings.total_bytes = total_bytes_;
    settings.carve = options_.logs.carve.what();
    log_jobs jobs(
        settings, [&work] { return make_hunt_worker(work); },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    jobs.read(options_.logs.paths);
    stopped_by_ = jobs.stopped_by();
    seconds_hunting_ = std::max(0.0, seconds_since(start) - rules.seconds_compiling());
  }

  void report_correlations() {
    for (const sigma::correlation_match& match : correlator_->finish()) {
      matches_->add(match.rule, match.event.time, correlator_->log_path(match.event.log));
      if (lines_) lines_->write_correlation(match);
    }
    if (correlator_->left_out() != 0) {
      problem("correlations",
              std::to_string(correlator_->left_out()) + " matches were too many and are left out");
    }
    const auto& rest = correlator_->not_worked_out();
    if (!rest.empty()) {
      problem(set_.rules[rest.front()].content.file,
              std::to_string(rest.size()) + " correlations from '" +
                  set_.rules[rest.front()].content.title + "' on have too many matches to look at");
    }
  }

  // Values on which a regular expression went on for too long do not match it; nobody should
  // believe they were looked at.
  void tell_given_up() const {
    for (const auto& [rule, events] : counts_.gave_up) {
      std::string what =
          "a regular expression reached its limit in " + std::to_string(events) + " events";
      const auto logs = counts_.left_out.find(rule);
      if (logs != counts_.left_out.end()) {
        what += "; the rule was left out of parts of " + std::to_string(logs->second) + " logs";
      }
      report_problem(set_.rules[rule].content.file, what);
    }
  }

  // To standard error, so that it never mixes with matches.
  void write_stats() const {
    std::string text;
    sigma::append_hunt_stats(set_, compiled_->compiled(), *matches_, counts_, text);
    std::fprintf(stderr, "seconds  rules read %.3f, compiled %.3f, events hunted %.3f\n%s",
                 seconds_reading_, compiled_->seconds_compiling(), seconds_hunting_, text.c_str());
  }

  int finish(bool matched) {
    if (!out_.flush()) {
      const bool named = !options_.output.empty() && options_.output != "-";
      problem(named ? options_.output : "standard output", std::strerror(out_.error()));
    }
    if (status_ != verb_done) return status_;
    return matched ? verb_matches : verb_done;
  }

  const hunt_options& options_;
  output_buffer out_;
  const std::uint64_t total_bytes_;
  sigma::rule_set set_;
  double seconds_reading_ = 0, seconds_hunting_ = 0;
  std::unique_ptr<sigma::rule_matches> matches_;
  std::unique_ptr<sigma::correlator> correlator_;
  std::optional<sigma::compiled_rules> compiled_;
  sigma::hunt_counts counts_;
  std::unique_ptr<match_form> form_;
  std::unique_ptr<match_output> lines_;
  int status_ = verb_done;
  int stopped_by_ = 0;
};

int run(const hunt_options& options) {
  const bool shows = !options.logs.quiet && progress_line::has_terminal();
  log_survey seen;
  if (!options.list && (shows || !options.output.empty())) {
    seen = survey_logs(options.logs, options.output);
  }
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
  hunt_run work(options, target.descriptor(), seen.bytes);
  const int status = work.run();
  const bool written = status != verb_bad_command && work.written();
  return finish_run(target, written, work.stopped_by(), status);
}

}  // namespace

int run_hunt(int argc, char** argv) {
  hunt_options options;
  bool done = false;
  const int status = read_hunt_options(argc, argv, options, done);
  return done ? status : run(options);
}

}  // namespace zanvik
