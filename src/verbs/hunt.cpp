// zanvik hunt: events that Sigma rules match.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/fileio.h"
#include "export/output_buffer.h"
#include "sigma/correlation.h"
#include "sigma/rule_matches.h"
#include "sigma/sigma.h"
#include "source/log_events.h"
#include "verbs/hunt_output.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct hunt_options {
  std::vector<std::string> paths, rules, placeholders;
  std::string log_sources, min_level, format, order;
  sigma::rule_choice choice;
  bool list = false;
  bool slack = false;
  bool stats = false;
  bool details = false;
  form_options form;
};

class hunt_run {
 public:
  explicit hunt_run(const hunt_options& options) : options_(options), out_(STDOUT_FILENO) {}

  int run() {
    if (!read_rules()) return verb_bad_command;
    if (options_.list) {
      std::string text;
      sigma::append_rule_list(set_, text);
      out_.append(text);
      return finish(0);
    }
    sigma::compiled_rules rules(set_);
    matches_ = std::make_unique<sigma::rule_matches>(set_);
    correlator_ = std::make_unique<sigma::correlator>(set_);
    if (!options_.format.empty()) {
      lines_ = std::make_unique<match_output>(options_.format, options_.form, set_,
                                              options_.order == "time", out_);
      lines_->begin();
    }
    sigma::hunter hunter(rules,
                         [this](const event_view& event, std::span<const std::uint32_t> found) {
                           for (const std::uint32_t rule : found) {
                             if (set_.rules[rule].reported) report(event, rule);
                             if (correlator_->wants(rule)) {
                               correlator_->add(event, rule, lines_ ? lines_->keep(event) : 0);
                             }
                           }
                         });
    read_logs(hunter);
    report_correlations();
    if (lines_ && !lines_->end()) problem("temporary file", "could not be used");
    std::string text;
    if (!lines_) matches_->append_table(text);
    out_.append(text);
    tell_given_up(hunter.counts());
    if (options_.stats) write_stats(rules, hunter.counts());
    return finish(matches_->total());
  }

 private:
  void problem(const std::string& path, const std::string& what) {
    std::fprintf(stderr, "zanvik: %s: %s\n", path.c_str(), what.c_str());
    status_ = verb_problems;
  }

  void report(const event_view& event, std::uint32_t rule) {
    matches_->add(rule, event.time(), event.source().path);
    if (lines_) {
      lines_->write(event, rule);
    } else if (options_.details) {
      std::string text;
      append_details(event, set_.rules[rule].content, text);
      out_.append(text);
    }
  }

  void report_correlations() {
    for (const sigma::correlation_match& match : correlator_->finish()) {
      matches_->add(match.rule, match.event.time, correlator_->log_path(match.event.log));
      if (lines_) {
        lines_->write_correlation(match);
      } else if (options_.details) {
        std::string text;
        append_details(match, set_.rules[match.rule].content, text);
        out_.append(text);
      }
    }
    if (correlator_->left_out() != 0) {
      problem("correlations",
              std::to_string(correlator_->left_out()) + " matches were too many and are left out");
    }
  }

  // Values on which a regular expression went on for too long do not match it; nobody should
  // believe they were looked at.
  void tell_given_up(const sigma::hunt_counts& counts) const {
    for (const auto& [rule, values] : counts.gave_up) {
      std::fprintf(stderr, "zanvik: %s: a regular expression reached its limit in %llu events\n",
                   set_.rules[rule].content.file.c_str(), static_cast<unsigned long long>(values));
    }
  }

  // To standard error, so that it never mixes with matches.
  void write_stats(const sigma::compiled_rules& rules, const sigma::hunt_counts& counts) const {
    std::string text;
    append_hunt_stats(set_, rules.compiled(), *matches_, counts, text);
    std::fwrite(text.data(), 1, text.size(), stderr);
  }

  bool read_rules() {
    sigma::log_source_table sources;
    std::string error;
    if (!options_.log_sources.empty()) error = read_log_sources(sources);
    if (error.empty()) error = sigma::load_rules(options_.rules, options_.choice, sources, set_);
    if (!error.empty()) std::fprintf(stderr, "zanvik: %s\n", error.c_str());
    for (const std::string& message : set_.messages) {
      std::fprintf(stderr, "zanvik: %s\n", message.c_str());
    }
    return error.empty();
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

  void read_logs(event_sink& sink) {
    log_event_reader reader(sink, options_.slack);
    const auto on_problem = [this](const std::string& path, const std::string& what) {
      problem(path, what);
    };
    log_finder finder(
        [&](found_log& log) {
          if (lines_) lines_->start_log(log.source);
          if (!reader.read(log)) problem(log.source.path, "a part could not be read");
        },
        on_problem);
    for (const std::string& path : options_.paths) finder.find(path);
  }

  int finish(std::uint64_t matches) {
    if (!out_.flush()) problem("standard output", std::strerror(out_.error()));
    if (status_ != verb_done) return status_;
    return matches != 0 ? verb_matches : verb_done;
  }

  const hunt_options& options_;
  output_buffer out_;
  sigma::rule_set set_;
  std::unique_ptr<sigma::rule_matches> matches_;
  std::unique_ptr<sigma::correlator> correlator_;
  std::unique_ptr<match_output> lines_;
  int status_ = verb_done;
};

// NAME=VALUE, or false.
bool split_placeholder(const std::string& text, hunt_options& options) {
  const std::size_t equal = text.find('=');
  if (equal == std::string::npos || equal == 0) return false;
  options.choice.placeholders.emplace_back(text.substr(0, equal), text.substr(equal + 1));
  return true;
}

}  // namespace

int run_hunt(int argc, char** argv) {
  hunt_options options;
  CLI::App app("Events of .evtx and .evt logs that Sigma rules match.", "zanvik hunt");
  app.add_option("PATH", options.paths, "logs, folders of logs, or - for standard input");
  app.add_option("-r,--rules", options.rules, "rules: files, or folders to the bottom")
      ->required()
      ->allow_extra_args(false);
  app.add_option("--log-sources", options.log_sources, "more log sources, a YAML file");
  app.add_option("--placeholder", options.placeholders, "NAME=VALUE for %NAME% in rules")
      ->allow_extra_args(false);
  app.add_option("--min-level", options.min_level, "rules of this level and above")
      ->check(CLI::IsMember({"informational", "low", "medium", "high", "critical"}));
  app.add_option("--status", options.choice.statuses, "rules of this status")
      ->allow_extra_args(false);
  app.add_option("--exclude-rule", options.choice.excluded_ids, "ID of a rule to leave out")
      ->allow_extra_args(false);
  app.add_option("--tag", options.choice.tags, "rules with such a tag; * stands for anything")
      ->allow_extra_args(false);
  app.add_flag("--list", options.list, "all rules, and why some do not run; reads no log");
  app.add_option("-f,--format", options.format, "the events themselves, a line each, in this form")
      ->check(CLI::IsMember(match_formats()));
  app.add_option("--order", options.order, "time: matches of all logs by time; needs --format")
      ->check(CLI::IsMember({"time"}))
      ->needs("--format");
  app.add_flag("--details", options.details, "each event that matches, for people");
  app.add_flag("--stats", options.stats, "what was loaded and what matched, on standard error");
  app.add_flag("--raw-cells", options.form.raw_cells,
               "csv: cells that look like formulas as they are");
  app.add_flag("--slack", options.slack, "records from free space too");
  try {
    app.parse(argc, argv);
    for (const std::string& text : options.placeholders) {
      if (!split_placeholder(text, options)) {
        throw CLI::ValidationError("--placeholder", "'" + text + "' is not NAME=VALUE");
      }
    }
    if (!options.list && options.paths.empty()) throw CLI::RequiredError("PATH");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? verb_done : verb_bad_command;
  }
  options.choice.min_level = sigma::level_of(options.min_level);
  return hunt_run(options).run();
}

}  // namespace zanvik
