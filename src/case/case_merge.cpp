#include "case/case_merge.h"

#include <algorithm>

#include "case/case_schema.h"
#include "case/clean_text.h"

namespace zanvik {
namespace {

// Tables are read in the order of their ids, without indexes, which could say anything. The first
// two columns are the row's id and its log.
constexpr const char* read_logs = R"(SELECT id, id, path, kind, sha256, size, first_time, last_time,
  events, findings, selection, reader FROM log NOT INDEXED ORDER BY id)";
constexpr const char* read_findings = R"(SELECT rowid, log, kind, weight, offset, chunk, record,
  detail FROM finding NOT INDEXED ORDER BY rowid)";
// From the third column on, the columns of `event_column` behind `log`; then whether the data are
// JSON.
constexpr const char* read_events = R"(SELECT e.id, e.log, e.offset, e.record, e.time, e.time_us,
  ch.name, p.name, e.event_id, e.version, e.level, e.task, e.opcode, e.keywords, e.process_id,
  e.thread_id, e.activity_id, co.name, s.name, e.data, e.flags, json_valid(e.data)
FROM event e NOT INDEXED
  LEFT JOIN channel ch ON ch.id = e.channel LEFT JOIN provider p ON p.id = e.provider
  LEFT JOIN computer co ON co.id = e.computer LEFT JOIN sid s ON s.id = e.user_sid
ORDER BY e.id)";
constexpr int first_value = 2;  // column of the first parameter behind `log`
constexpr int json_valid_at = 21;

bool is_clean(const statement& row, int column) {
  return row.is_text(column) && is_clean_text(row.text(column));
}
bool is_clean_or_null(const statement& row, int column) {
  return row.is_null(column) || is_clean(row, column);
}
bool is_count(const statement& row, int column) {
  return row.is_integer(column) && row.integer(column) >= 0;
}
bool is_number(const statement& row, int column) {
  return row.is_integer(column) || is_clean_or_null(row, column);
}

bool is_sha256(std::string_view text) {
  return text.size() == 64 && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

}  // namespace

bool case_source::fail(const std::string& why) {
  if (error_.empty()) error_ = why;
  return false;
}

std::string case_source::open(const std::string& path) {
  std::string problem = why_no_case(path);
  if (!problem.empty()) return problem;
  if (is_unfinished_case(path)) {
    return "is in use, or was left by a run that was killed: `zanvik export --format sqlite` with "
           "it as output, and any log, puts it right";
  }
  if (!base_.open(path, database::access::read)) return base_.error();
  if (!base_.run("BEGIN")) return base_.error();
  problem = check_tables();
  if (!problem.empty()) return problem;
  statement kept = base_.prepare("SELECT 1 FROM sqlite_schema WHERE name = ?");
  full_text_ = kept.bind(1, full_text_table).next();
  logs_.rows = base_.prepare(read_logs);
  findings_.rows = base_.prepare(read_findings);
  events_.rows = base_.prepare(read_events);
  const std::int64_t bytes = base_.number("SELECT CAST(total(size) AS INTEGER) FROM log");
  log_bytes_ = static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0));
  if (!advance(findings_, "finding") || !advance(events_, "event")) return error_;
  return "";
}

// Without this check the pages of a small file could stand for rows without end.
std::string case_source::check_tables() {
  std::string problem = why_no_case_tables(base_);
  if (!problem.empty()) return problem;
  for (const case_table& table : case_tables()) {
    const std::string said = base_.word("PRAGMA quick_check('" + std::string(table.name) + "')");
    if (said != "ok") return "is damaged: " + (said.empty() ? base_.error() : said);
  }
  return "";
}

// False after an error; at the end `at_row` is false.
bool case_source::advance(cursor& table, const char* name) {
  table.at_row = table.rows.next();
  if (!table.at_row) return base_.failed() ? fail("is damaged: " + base_.error()) : true;
  const std::int64_t id = table.rows.integer(0);
  if (id <= table.id) return fail(std::string("the rows of its table ") + name + " have no order");
  table.id = id;
  table.log = table.rows.integer(1);
  return true;
}

bool case_source::next_log() {
  // What is left of the log in hand, if it was passed over.
  const std::int64_t last = logs_.id;
  while (error_.empty() && findings_.at_row && findings_.log <= last) {
    if (!advance(findings_, "finding")) return false;
  }
  while (error_.empty() && events_.at_row && events_.log <= last) {
    if (!advance(events_, "event")) return false;
  }
  if (!error_.empty() || !advance(logs_, "log")) return false;
  if (logs_.at_row) return read_log();
  return findings_.at_row || events_.at_row ? fail("has events of a log that it does not have")
                                            : false;
}

bool case_source::read_log() {
  const statement& row = logs_.rows;
  const bool good = is_clean(row, 2) && is_clean(row, 3) && is_clean_or_null(row, 4) &&
                    (row.is_null(4) || is_sha256(row.text(4))) && is_count(row, 5) &&
                    is_clean_or_null(row, 6) && is_clean_or_null(row, 7) && is_count(row, 8) &&
                    is_count(row, 9) && is_clean(row, 10) && is_clean(row, 11);
  if (!good) return fail("log " + std::to_string(logs_.id) + " is not as zanvik writes it");
  log_ = {};
  log_.path = row.text(2);
  log_.kind = row.text(3);
  log_.sha256 = row.text(4);
  log_.size = static_cast<std::uint64_t>(row.integer(5));
  log_.first_time = row.text(6);
  log_.last_time = row.text(7);
  event_count_ = row.integer(8);
  log_.findings = static_cast<std::uint64_t>(row.integer(9));
  log_.selection = row.text(10);
  log_.reader = row.text(11);
  return true;
}

bool case_source::add_to(case_rows& rows) {
  if (!rows.begin(log_)) return false;
  const bool whole = add_findings(rows) && add_events(rows);
  if (rows.failed()) return false;
  if (whole) return rows.commit();
  rows.leave_out();
  return false;
}

bool case_source::add_findings(case_rows& rows) {
  for (; findings_.at_row && findings_.log == logs_.id;) {
    const statement& row = findings_.rows;
    const bool good = is_clean(row, 2) && is_clean(row, 3) && is_number(row, 4) &&
                      !row.is_null(4) && is_number(row, 5) && is_number(row, 6) && is_clean(row, 7);
    if (!good) return fail("a finding of " + log_.path + " is not as zanvik writes it");
    if (!rows.add_finding_from(row, 2) || !advance(findings_, "finding")) return false;
  }
  return true;
}

bool case_source::add_events(case_rows& rows) {
  std::int64_t count = 0;
  for (; events_.at_row && events_.log == logs_.id; ++count) {
    if (!bind_event(rows)) {
      return fail("event " + std::to_string(events_.id) + " is not as zanvik writes it");
    }
    if (!rows.add_event() || !advance(events_, "event")) return false;
  }
  if (count == event_count_) return true;
  return fail(log_.path + ": " + std::to_string(count) + " of its " + std::to_string(event_count_) +
              " events are there");
}

bool case_source::bind_event(case_rows& rows) {
  for (int column = int(event_column::offset); column <= int(event_column::flags); ++column) {
    if (!bind_column(rows, event_column(column), column - 2 + first_value)) return false;
  }
  return true;
}

bool case_source::bind_column(case_rows& rows, event_column column, int at) {
  const statement& row = events_.rows;
  const std::string_view text = row.is_text(at) ? row.text(at) : std::string_view();
  if (!row.is_integer(at) && !is_clean_or_null(row, at)) return false;
  switch (column) {
    case event_column::time_us:
    case event_column::flags:
      if (!row.is_integer(at)) return false;
      break;
    case event_column::data:
      if (!text.starts_with('{') || row.integer(json_valid_at) != 1) return false;
      break;
    case event_column::time:
      if (!row.is_text(at)) return false;
      break;
    case event_column::channel:
    case event_column::provider:
    case event_column::computer:
    case event_column::user_sid:
      if (row.is_integer(at)) return false;
      if (row.is_text(at)) {
        rows.bind_shared(column, text);
        return true;
      }
      break;
    default:
      break;
  }
  if (row.is_integer(at)) {
    rows.bind(column, row.integer(at));
  } else if (row.is_null(at)) {
    rows.bind_null(column);
  } else {
    rows.bind(column, text);
  }
  return true;
}

}  // namespace zanvik
