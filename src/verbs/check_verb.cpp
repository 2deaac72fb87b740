// zanvik check: is a log whole, was it changed, and what is each of its bytes?
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "export/output_buffer.h"
#include "inspect/forms/ledger_forms.h"
#include "inspect/inspect_log.h"
#include "source/log_finder.h"
#include "verbs/list_logs.h"
#include "verbs/log_options.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct check_options : path_options {
  std::string format = "table";
  table_options table;
  carve_option carve;
  bool list = false;
};

int run(const check_options& options) {
  if (options.list) return list_logs(options.paths, options.carve.what());
  int status = verb_done;
  const auto problem = [&status](const std::string& path, const std::string& what) {
    report_problem(path, what);
    status = verb_problems;
  };
  bool findings = false;
  std::string text;
  if (options.format == "csv") text = ledger_csv_header;
  output_buffer out(STDOUT_FILENO);
  log_finder finder(
      [&](found_log& log) {
        log_ledger ledger;
        inspect_log(log, ledger);
        if (options.format == "json") {
          append_ledger_json(text, ledger);
        } else if (options.format == "csv") {
          append_ledger_csv(text, ledger);
        } else {
          append_ledger_table(text, ledger, options.table);
        }
        out.append(text);
        text.clear();
        findings = findings || ledger.findings.any_finding();
        if (ledger.findings.count(finding_kind::unreadable) != 0) {
          problem(log.source.path, "a part could not be read");
        }
      },
      problem);
  finder.carve(options.carve.what());
  for (const std::string& path : options.paths) finder.find(path);
  out.append(text);
  if (!out.flush()) problem("standard output", std::strerror(out.error()));
  return status == verb_done && findings ? verb_findings : status;
}

}  // namespace

int run_check(int argc, char** argv) {
  check_options options;
  CLI::App app(
      "A ledger of each log: accounts for every byte, and lists what is odd with its place.\n"
      "Status 0 when all logs are whole, 4 with findings, 1 when something could not be read.",
      "zanvik check");
  add_path_options(app, options, "logs, folders, disk images, or - for standard input");
  app.add_option("-f,--format", options.format, "table, json (one object per log) or csv")
      ->check(CLI::IsMember({"table", "json", "csv"}));
  app.add_flag("--chunks", options.table.chunks, "a row for each chunk in the table");
  options.carve.add_to(app);
  add_list_option(app, options.list);
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : run(options);
}

}  // namespace zanvik
