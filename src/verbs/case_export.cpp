#include "verbs/case_export.h"

#include "case/case.h"
#include "inspect/inspect_log.h"
#include "pipeline/temporary_file.h"
#include "run/version.h"
#include "source/block_reader.h"
#include "source/log_events.h"
#include "verbs/case_reports.h"
#include "verbs/log_survey.h"
#include "verbs/progress_line.h"
#include "verbs/selection_text.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

// A log on standard input, which has to be read twice, as a file.
class stream_copy {
 public:
  explicit stream_copy(const std::string& folder) : folder_(folder) {}

  // Makes `log` one that can be read again. Returns what went wrong, or nothing.
  [[nodiscard]] std::string take(found_log& log) {
    if (!file_.create(folder_)) return file_.error();
    const bool whole = read_blocks(log, 0, 1 << 20, [this](std::span<std::byte> block, auto) {
      (void)file_.append({reinterpret_cast<const char*>(block.data()), block.size()});
    });
    if (!file_.error().empty()) return file_.error();
    log.is_stream = false;
    log.head.clear();
    log.size = file_.size();
    log.read_at = [this](std::span<std::byte> buffer, std::uint64_t offset) -> ssize_t {
      if (offset >= file_.size()) return 0;
      const std::span<std::byte> part =
          buffer.first(std::min<std::uint64_t>(buffer.size(), file_.size() - offset));
      const std::span<char> bytes(reinterpret_cast<char*>(part.data()), part.size());
      return file_.read(offset, bytes) ? std::ssize(part) : -1;
    };
    return whole ? "" : "a part could not be read";
  }

 private:
  const std::string& folder_;
  temporary_file file_;
};

class case_run : public event_sink {
 public:
  case_run(const log_options& logs, const case_options& options, case_file& file,
           std::uint64_t total_bytes)
      : logs_(logs),
        options_(options),
        selection_(selection_text(logs)),
        rows_(file),
        writer_(rows_),
        filter_(logs.conditions),
        filtering_(logs.conditions.any()),
        reader_(*this, logs.slack),
        progress_(!logs.quiet && progress_line::has_terminal(), total_bytes) {
    if (logs.conditions.event_ids) reader_.take_event_ids(&*logs.conditions.event_ids);
    reader_.on_progress = [this](std::uint64_t read) { progress_.update(done_ + read); };
  }

  void on_event(const event_view& event) override {
    if (!filtering_ || filter_.takes(event)) writer_.on_event(event);
  }

  int run() {
    log_finder finder(
        [this](found_log& log) { take(log); },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    finder.carve(logs_.carve.what());
    for (const std::string& path : logs_.paths) {
      if (!rows_.failed()) finder.find(path);
    }
    if (rows_.failed()) problem(options_.output, rows_.error());
    return status_;
  }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  void take(found_log& log) {
    if (rows_.failed()) return;
    stream_copy copy(options_.temporary_folder);
    std::string lost;
    if (log.is_stream) lost = copy.take(log);
    log_ledger ledger;
    inspect_log(log, ledger);
    if (!lost.empty()) ledger.sha256.clear();
    log_row row = row_of(ledger);
    row.selection = selection_;
    row.reader = "zanvik " ZANVIK_VERSION;
    if (!is_in_case(row)) add(log, ledger, row, lost);
    done_ += log.size;
  }

  // Says so if the log is in the case already.
  bool is_in_case(const log_row& row) {
    const kept_log kept = rows_.find(row);
    if (kept.id == 0) return false;
    if (!report_kept(kept, row, logs_.quiet)) status_ = verb_problems;
    return true;
  }

  void add(const found_log& log, const log_ledger& ledger, const log_row& row, std::string lost) {
    if (!rows_.begin(row) || !writer_.add_findings(ledger)) return;
    const bool whole = reader_.read(log);
    if (!rows_.commit()) return;
    if (lost.empty() && !whole) lost = reader_.problem();
    if (lost.empty() && !whole) lost = "a part could not be read";
    if (!lost.empty()) problem(row.path, lost);
  }

  const log_options& logs_;
  const case_options& options_;
  const std::string selection_;
  case_rows rows_;
  case_writer writer_;
  event_filter filter_;
  bool filtering_;
  log_event_reader reader_;
  progress_line progress_;
  std::uint64_t done_ = 0;
  int status_ = verb_done;
};

int refuse(const std::string& path, const std::string& what) {
  report_problem(path, what);
  return verb_problems;
}

}  // namespace

std::string case_support_problem() { return ""; }

int export_case(const log_options& logs, const case_options& options) {
  const log_survey seen = survey_logs(logs, options.output);
  if (!seen.output_is_input.empty()) {
    report_problem(options.output, "is one of the files to read (" + seen.output_is_input + ")");
    return verb_bad_command;
  }
  database::set_temporary_folder(options.temporary_folder);
  case_file file;
  std::string error = file.open(options.output, options.full_text);
  if (!error.empty()) return refuse(options.output, error);
  file.expect(seen.bytes);
  const int status = case_run(logs, options, file, seen.bytes).run();
  error = file.finish();
  return error.empty() ? status : refuse(options.output, error);
}

}  // namespace zanvik
