// zanvik export: whole events, in forms that other tools read.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "export/event_form.h"
#include "verbs/case_export.h"
#include "verbs/export_worker.h"
#include "verbs/list_logs.h"
#include "verbs/log_jobs.h"
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
  unsigned threads = 0;
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

// The timelines are made by one thread.
class timeline_worker : public log_worker {
 public:
  explicit timeline_worker(timeline_logs& lines) : lines_(lines) {}

  std::unique_ptr<part_result> read(log_part& part, part_turn& turn) override {
    auto result = std::make_unique<nothing>();
    const auto progress = [&turn](std::uint64_t bytes) { turn.show_progress(bytes); };
    result->lost = lines_.read(*part.log, progress);
    return result;
  }

 private:
  class nothing : public part_result {
    void pass_on() override {}
    std::uint64_t waiting_bytes() const override { return 0; }
  };

  timeline_logs& lines_;
};

class export_run {
 public:
  export_run(const export_options& options, int descriptor, std::uint64_t total_bytes)
      : options_(options),
        out_(descriptor),
        form_(form_of(options).make(options.form)),
        work_{options.logs, form_of(options), options.form, out_, nullptr, false, {}} {
    settings_.threads = options.threads;
    settings_.shows_progress = !options.logs.quiet && progress_line::has_terminal();
    settings_.total_bytes = total_bytes;
    settings_.carve = options.logs.carve.what();
    if (is_timeline_form(options.format)) {
      settings_.threads = 1;
      settings_.whole_logs = true;
      timeline_ = std::make_unique<timeline_logs>(
          options.format, options.logs.conditions,
          timeline_options{options.logs.slack, options.event_time}, options.order);
    } else if (by_time(options)) {
      by_time_ = std::make_unique<line_sorter>(options.order.sorting, options.form.copies);
      work_.by_time = by_time_.get();
    }
  }

  int run() {
    if (!timeline_) form_->begin(out_);
    read_logs();
    const std::string error = write_waiting();
    if (!error.empty()) {
      problem("sorting", error);
      complete_ = false;
    }
    if (!out_.flush()) {
      const bool named = !options_.output.empty() && options_.output != "-";
      problem(named ? options_.output : "standard output", std::strerror(out_.error()));
    }
    return status_;
  }
  // Whether the output is whole: all that could be read is in it.
  bool written() const { return complete_ && !out_.failed(); }
  int stopped_by() const { return stopped_by_; }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  void read_logs() {
    log_jobs jobs(
        settings_, [this] { return make_worker(); },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    work_.one_thread = jobs.threads() == 1;
    jobs.read(options_.logs.paths);
    stopped_by_ = jobs.stopped_by();
  }
  std::unique_ptr<log_worker> make_worker() {
    if (timeline_) return std::make_unique<timeline_worker>(*timeline_);
    return make_export_worker(work_);
  }

  // Writes what had to wait for the last log, and the end of the form. Returns what went wrong.
  std::string write_waiting() {
    if (timeline_) return timeline_->finish(out_) ? "" : timeline_->error();
    const bool done = !by_time_ || write_lines(*by_time_, *form_, out_);
    form_->end(out_);
    return done ? "" : by_time_->error();
  }

  const export_options& options_;
  output_buffer out_;
  const std::unique_ptr<event_form> form_;
  std::unique_ptr<line_sorter> by_time_;
  std::unique_ptr<timeline_logs> timeline_;  // of a form that is no event_form
  export_work work_;
  log_jobs::settings settings_;
  bool complete_ = true;
  int status_ = verb_done;
  int stopped_by_ = 0;
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
  return finish_run(target, work.written(), work.stopped_by(), status);
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
      ->check(output_name_problem)
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
  add_threads_option(app, options.threads);
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
