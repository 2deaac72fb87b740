// zanvik export: whole events, in forms that other tools read.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "export/event_form.h"
#include "source/log_events.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct export_options {
  std::vector<std::string> paths;
  std::string output;
  std::string format = "jsonl";
  bool quiet = false;
  bool slack = false;
  form_options form;
};

class form_sink : public event_sink {
 public:
  form_sink(event_form& form, output_buffer& out) : form_(form), out_(out) {}
  void on_event(const event_view& event) override { form_.write(out_, event); }

 private:
  event_form& form_;
  output_buffer& out_;
};

int run(const export_options& options) {
  int status = verb_done;
  const auto problem = [&status](const std::string& path, const std::string& what) {
    std::fprintf(stderr, "zanvik: %s: %s\n", path.c_str(), what.c_str());
    status = verb_problems;
  };
  std::unique_ptr<event_form> form;
  for (const form_name& known : form_names()) {
    if (known.name == options.format) form = known.make(options.form);
  }
  output_buffer out(STDOUT_FILENO);
  form_sink sink(*form, out);
  log_event_reader reader(sink, options.slack);
  form->begin(out);
  log_finder finder(
      [&](found_log& log) {
        form->start_log(log.source);
        if (!reader.read(log)) problem(log.source.path, "a part could not be read");
      },
      problem);
  for (const std::string& path : options.paths) finder.find(path);
  form->end(out);
  if (!out.flush()) problem("standard output", std::strerror(out.error()));
  return status;
}

}  // namespace

int run_export(int argc, char** argv) {
  export_options options;
  CLI::App app("Whole events of .evtx and .evt logs, in forms that other tools read.",
               "zanvik export");
  std::vector<std::string> forms;
  for (const form_name& known : form_names()) forms.emplace_back(known.name);
  app.add_option("PATH", options.paths, "logs, folders of logs, or - for standard input")
      ->required();
  app.add_option("-f,--format", options.format, "form of the output")->check(CLI::IsMember(forms));
  app.add_flag("-q,--quiet", options.quiet, "no progress");
  app.add_flag("--slack", options.slack, "records from free space too, marked");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? verb_done : verb_bad_command;
  }
  return run(options);
}

}  // namespace zanvik
