// zanvik export: whole events, in forms that other tools read.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "export/event_form.h"
#include "source/log_events.h"
#include "verbs/case_export.h"
#include "verbs/list_logs.h"
#include "verbs/log_options.h"
#include "verbs/log_survey.h"
#include "verbs/order_options.h"
#include "verbs/ordered_events.h"
#include "verbs/output_target.h"
#include "verbs/progress_line.h"
#include "verbs/timeline_logs.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct export_options {
  log_options logs;
  std::string output;
  std::string format{form_names().front().name};
  form_options form;
  order_options order;
  bool event_time = false;
  bool full_text = false;
  bool list = false;
};

// A form that is no text, and has a run of its own.
constexpr const char* case_form = "sqlite";

const form_name& form_of(const export_options& options) {
  const auto forms = form_names();
  const auto found = std::find_if(forms.begin(), forms.end(), [&](const form_name& known) {
    return known.name == options.format;
  });
  return found == forms.end() ? forms.front() : *found;
}

// A run's events stand in one order of time.
bool by_time(const export_options& options) {
  return options.order.by_time(is_timeline_form(options.format) || form_of(options).by_time);
}

class export_run : public event_sink {
 public:
  export_run(const export_options& options, int descriptor, std::uint64_t total_bytes)
      : options_(options),
        filter_(options.logs.conditions),
        filtering_(options.logs.conditions.any()),
        out_(descriptor),
        progress_(!options.logs.quiet && progress_line::has_terminal(), total_bytes),
        form_(form_of(options).make(options.form)),
        events_(*form_, out_, options.order, by_time(options), options.form.copies) {
    if (is_timeline_form(options.format)) {
      timeline_ = std::make_unique<timeline_logs>(
          options.format, options.logs.conditions,
          timeline_options{options.logs.slack, options.event_time}, options.order);
    }
  }

  void on_event(const event_view& event) override {
    if (!filtering_ || filter_.takes(event)) events_.write(event);
  }

  int run() {
    int status = verb_done;
    const auto problem = [&status](const std::string& path, const std::string& what) {
      report_problem(path, what);
      status = verb_problems;
    };
    log_event_reader reader(*this, options_.logs.slack);
    if (options_.logs.conditions.event_ids) {
      reader.take_event_ids(&*options_.logs.conditions.event_ids);
    }
    std::uint64_t done = 0;
    reader.on_progress = [&](std::uint64_t read) { progress_.update(done + read); };
    log_finder finder(
        [&](found_log& log) {
          if (!read_log(log, reader)) {
            const std::string& lost = reader.problem();
            problem(log.source.path, lost.empty() ? "a part could not be read" : lost);
          }
          done += log.size;
        },
        problem);
    finder.carve(options_.logs.carve.what());
    if (!timeline_) form_->begin(out_);
    for (const std::string& path : options_.logs.paths) finder.find(path);
    const std::string error = write_waiting();
    if (!error.empty()) {
      problem("sorting", error);
      complete_ = false;
    }
    if (!out_.flush()) {
      const bool named = !options_.output.empty() && options_.output != "-";
      problem(named ? options_.output : "standard output", std::strerror(out_.error()));
    }
    return status;
  }
  // Whether the output is whole: all that could be read is in it.
  bool written() const { return complete_ && !out_.failed(); }

 private:
  bool read_log(const found_log& log, log_event_reader& reader) {
    if (timeline_) return timeline_->read(log, reader.on_progress);
    form_->start_log(log.source);
    events_.start_log();
    return reader.read(log);
  }

  // Writes what had to wait for the last log, and the end of the form. Returns what went wrong.
  std::string write_waiting() {
    if (timeline_) return timeline_->finish(out_) ? "" : timeline_->error();
    const bool done = events_.finish();
    form_->end(out_);
    return done ? "" : events_.error();
  }

  const export_options& options_;
  event_filter filter_;
  bool filtering_;
  output_buffer out_;
  progress_line progress_;
  std::unique_ptr<event_form> form_;
  ordered_events events_;
  bool complete_ = true;
  std::unique_ptr<timeline_logs> timeline_;  // of a form that is no event_form
};

int run(const export_options& options) {
  if (options.list) return list_logs(options.logs.paths, options.logs.carve.what());
  if (options.format == case_form) {
    return export_case(options.logs,
                       {options.output, options.order.sorting.folder, options.full_text});
  }
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
  export_run work(options, target.descriptor(), seen.bytes);
  const int status = work.run();
  if (work.written() && !target.keep(problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  return status;
}

std::string forms_text() {
  std::string text = "form of the output:";
  for (const form_name& known : form_names()) {
    text += "\n" + std::string(known.name) + ": " + std::string(known.what);
  }
  text += "\nl2t, bodyfile: a timeline with the lines of the classic -csvl2t and -bodyfile";
  text += "\nsqlite: a case: a database to ask in SQL; an existing one gets more logs";
  return text;
}

// What a case cannot be made with: why not, or nothing.
std::string case_problem(const export_options& options) {
  if (options.output.empty() || options.output == "-") return "--format sqlite: needs -o FILE";
  if (!options.order.order.empty()) {
    return "--order: a database has no order; ask it with ORDER BY time_us";
  }
  if (options.form.copies) return "--unique: sqlite keeps all events; ask it with GROUP BY";
  return case_support_problem();
}

}  // namespace

int run_export(int argc, char** argv) {
  export_options options;
  CLI::App app("Whole events of .evtx and .evt logs, in forms that other tools read.",
               "zanvik export");
  std::vector<std::string> forms;
  for (const form_name& known : form_names()) forms.emplace_back(known.name);
  forms.insert(forms.end(), {"l2t", "bodyfile", case_form});
  app.add_option("-f,--format", options.format, forms_text())
      ->check(CLI::IsMember(forms))
      ->type_name("FORM");
  app.add_option("-o,--output", options.output,
                 "write to this file, which gets its name when it is complete")
      ->type_name("FILE");
  app.add_flag("--raw-cells", options.form.raw_cells,
               "csv: do not mark cells that a spreadsheet would run as formulas");
  add_order_options(app, options.order,
                    "log: one log after the other; time: all events in one order of time, which "
                    "is the default for timesketch, l2t and bodyfile");
  app.add_flag("--event-time", options.event_time,
               "l2t, bodyfile: the events' own times, like the classic -event_time");
  app.add_flag("--full-text", options.full_text,
               "sqlite: an index of all words in the events' data, in the table full_text");
  app.add_flag("--unique", options.form.copies,
               "write copies of an event once, with their number; needs --order time");
  add_log_options(app, options.logs);
  add_list_option(app, options.list);
  app.final_callback([&] {
    const bool is_case = options.format == case_form && !options.list;
    if (std::string why = is_case ? case_problem(options) : ""; !why.empty()) {
      throw CLI::ValidationError(std::move(why));
    }
    if (options.full_text && options.format != case_form) {
      throw CLI::ValidationError("--full-text", "is for --format sqlite");
    }
    if (options.form.copies && !by_time(options)) {
      throw CLI::ValidationError("--unique", "needs --order time");
    }
    if (options.form.copies && is_timeline_form(options.format)) {
      throw CLI::ValidationError("--unique", options.format + " has no place for the copies");
    }
    if (options.logs.carve.what() != carve_what::nothing && is_timeline_form(options.format)) {
      throw CLI::ValidationError("--carve", options.format + " is made of whole logs alone");
    }
  });
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : run(options);
}

}  // namespace zanvik
