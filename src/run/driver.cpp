#include "run/driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <string>

#include "base/console.h"
#include "base/fileio.h"
#include "base/fileio_output.h"
#include "base/limits.h"
#include "options/cmdline_ctx.h"
#include "pipeline/processors.h"
#include "run/log_threads.h"
#include "run/log_run.h"
#include "run/report_runs.h"
#include "run/run_reports.h"
#include "run/stats_file.h"
#include "run/stream_run.h"
#include "run/usage.h"
#include "run/version.h"

namespace zanvik {
namespace {

constexpr char version_text[] = ZANVIK_VERSION_TEXT;
constexpr char identity_text[] = ZANVIK_TITLE "; ";

// Output that nobody reads is dropped, and output beyond a file-size limit of the process fails as
// on a full disk. A descriptor that the caller closed must not be given to the first file that is
// opened, or messages or results would end up there.
void prepare_process() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) == -1) return;
  }
}

argument_list arguments_of(int argc, char** argv) {
  argument_list params;
  for (int i = 0; i < argc; ++i) params.emplace_back(argv[i] == nullptr ? "" : argv[i]);
  return params;
}

bool wants_help(const argument_list& params) {
  return has_option_from("-h", params, 0) || has_option_from("-help", params, 0) ||
         has_option_from("/?", params, 0) || has_option_from("--help", params, 0) ||
         params.size() == 1;
}

std::string identification_line(const argument_list& params) {
  std::string text = "\"cmdline:";
  text += identity_text;
  if (has_option_from("-pipe", params, 0)) text += "<filelist> ... | ";
  return text + command_line_text(params, '\'') + "\"\n";
}

// Checks between valid options and a run; prints the reason and returns false if there is no run.
bool pass_gates(log_run& run, std::ofstream& stats_stream, const std::string& identification) {
  const evt_output_options& options = run.options;
  if (!options.create_log_path.empty()) {
    prob_message("Option is not available\n");
    return false;
  }
  if (run.logs.empty() && !options.walk.is_stream_run()) {
    prob_message("need to specify a log file, via the -log <event log> option\n");
    return false;
  }
  if (!options.stats_on) return true;
  if (!open_stats_file(run, stats_stream)) {
    prob_message("prob creating stats file: %s, aborting\n", options.stats_file.c_str());
    return false;
  }
  stats_stream << identification;
  return true;
}

// The lines of all logs, which have waited for each other.
void write_one_timeline(log_run& run) {
  if (!run.own_timeline || !run.own_timeline->any()) return;
  one_timeline& timeline = *run.own_timeline;
  const bool done = timeline.finish([&run](std::string_view line) {
    run.results << line;
    return run.results.good();
  });
  if (!done && !timeline.error().empty()) {
    prob_message("prob sorting the timeline: %s, it is cut short\n", timeline.error().c_str());
  }
}

// A trace and a terminal show one log after the other, with messages and results in turn.
unsigned threads_of(const evt_output_options& options, const uni::fileio_output& results) {
  if (options.trace.diags_on || results.is_terminal()) return 1;
  return options.threads == 0 ? usable_processors() : std::min(options.threads, limits::threads);
}

// The status is 0 all the same, so only this says that results are cut short. Whoever closed the
// other end of a pipe does not need to know.
void tell_lost_output(uni::fileio_output& results, const log_run& run) {
  const evt_output_options& options = run.options;
  results.flush();
  if (const int error = results.write_error(); error != 0 && error != EPIPE) {
    const char* name = options.out_file.empty() ? "standard output" : options.out_file.c_str();
    prob_message("prob writing results: %s, they are cut short: %s\n", name, std::strerror(error));
  }
  errno = 0;
  if (run.stats && !run.stats->flush() && errno != EPIPE) {
    prob_message("prob writing stats file: %s\n", options.stats_file.c_str());
  }
}

}  // namespace

int run_program(int argc, char** argv) {
  prepare_process();
  argument_list params = arguments_of(argc, argv);
  if (wants_help(params)) {
    print_usage();
    return 0;
  }
  // Like help: anywhere in the line, even in place of another option's value.
  if (has_option_from("--version", params, 0)) {
    print_version();
    return 0;
  }
  // Parsing takes the list apart, so the line is made first.
  const std::string identification = identification_line(params);
  evt_output_options options;
  if (!options.parse_log_options(params, version_text, identity_text)) {
    uni::fileio_output(STDOUT_FILENO) << identification;
    return -1;
  }
  const cmdline_ctx context(options, [](const std::string&) { return 0; });
  uni::fileio results_file;
  if (!options.out_file.empty() && !results_file.open(options.out_file, uni::open_mode::replace)) {
    prob_message("prob opening results file: %s for writing\n", options.out_file.c_str());
    return -1;
  }
  uni::fileio_output results(options.out_file.empty() ? STDOUT_FILENO : results_file.descriptor());
  results << identification << '\n' << std::flush;

  std::ofstream stats_stream;
  log_run run(options, results);
  run.output = &results;
  if (!pass_gates(run, stats_stream, identification)) return run.strict.any() ? 1 : 0;
  log_threads jobs(run, threads_of(options, results));
  if (options.walk.is_stream_run()) {
    run_stream(run);
  } else {
    (void)run_reports(run);
    write_run_statistics(run);
  }
  write_one_timeline(run);
  check_command_use(run);
  tell_lost_output(results, run);
  return run.strict.any() ? 1 : 0;
}

}  // namespace zanvik
