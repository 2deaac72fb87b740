#include "verbs/hunt_options.h"

#include <CLI/CLI.hpp>

#include "verbs/hunt_output.h"
#include "verbs/log_jobs.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

void add_rule_options(CLI::App& app, hunt_options& options) {
  const auto add_list = [&](const char* name, std::vector<std::string>& list, const char* what,
                            const char* type) {
    return app.add_option(name, list, what)->allow_extra_args(false)->type_name(type);
  };
  add_list("-r,--rules", options.rules, "rules: files, or folders to the bottom", "PATH")
      ->required();
  app.add_option("--log-sources", options.log_sources, "more log sources")->type_name("FILE");
  add_list("--placeholder", options.placeholders, "what %NAME% in rules stands for", "NAME=VALUE");
  app.add_option("--min-level", options.min_level, "rules of this level and above")
      ->check(CLI::IsMember({"informational", "low", "medium", "high", "critical"}))
      ->type_name("LEVEL");
  add_list("--status", options.choice.statuses, "rules of this status", "STATUS")
      ->check(CLI::IsMember({"stable", "test", "experimental", "deprecated", "unsupported"}));
  add_list("--exclude-rule", options.choice.excluded_ids, "leave out the rule with this ID", "ID");
  add_list("--tag", options.choice.tags, "rules with such a tag; * stands for anything", "PATTERN");
}

void add_result_options(CLI::App& app, hunt_options& options) {
  CLI::Option* const format =
      app.add_option("-f,--format", options.format, "events that match, a line each, in this form")
          ->check(CLI::IsMember(match_formats()))
          ->type_name("FORM");
  add_order_options(app, options.order,
                    "log: matches as they are found, those of correlations last; time: all matches "
                    "in one order of time, which is usual for timesketch");
  app.add_flag("--unique", options.form.copies,
               "write copies of an event once, with their number; needs --format and --order time");
  app.add_option("-o,--output", options.output,
                 "write to this file, which appears when it is whole")
      ->check(output_name_problem)
      ->type_name("FILE");
  app.add_flag("--raw-cells", options.form.raw_cells,
               "csv: leave cells as they are that a spreadsheet would run as a formula");
  app.add_flag("--details", options.details, "for people: each event that matches")
      ->excludes(format);
  app.add_flag("--list", options.list, "all rules, and why some do not run; reads no log");
  app.add_flag("--stats", options.stats, "what was loaded and what matched, on standard error");
}

// NAME=VALUE
std::string check_placeholder(const std::string& text) {
  const std::size_t equal = text.find('=');
  return equal == 0 || equal == std::string::npos ? "'" + text + "' is not NAME=VALUE" : "";
}

}  // namespace

int read_hunt_options(int argc, char** argv, hunt_options& options, bool& done) {
  CLI::App app("Events of .evtx and .evt logs that Sigma rules match.", "zanvik hunt");
  add_rule_options(app, options);
  add_result_options(app, options);
  add_log_options(app, options.logs);
  add_threads_option(app, options.threads);
  app.get_option("--placeholder")->check(check_placeholder);
  options.logs.needed = false;
  app.final_callback([&] {
    if (!options.list && options.logs.paths.empty() && app.count("--from-list") == 0) {
      throw CLI::RequiredError("PATH");
    }
    if (options.form.copies && (options.format.empty() ||
                                !options.order.by_time(usually_by_time(options.format)))) {
      throw CLI::ValidationError("--unique", "needs --format and --order time");
    }
    if (options.order.order == "time" && options.format.empty() && !options.details) {
      throw CLI::ValidationError("--order", "needs --format or --details");
    }
  });
  const int status = parse_verb(app, argc, argv, done);
  if (done) return status;
  options.choice.min_level = sigma::level_of(options.min_level);
  for (const std::string& text : options.placeholders) {
    const std::size_t equal = text.find('=');
    options.choice.placeholders.emplace_back(text.substr(0, equal), text.substr(equal + 1));
  }
  return verb_done;
}

}  // namespace zanvik
