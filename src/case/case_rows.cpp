#include "case/case_rows.h"

#include <limits>

#include "base/digits.h"
#include "case/case_schema.h"
#include "case/clean_text.h"

namespace zanvik {
namespace {

constexpr const char* insert_event = R"(INSERT INTO event
(log, offset, record, time, time_us, channel, provider, event_id, version, level, task, opcode,
 keywords, process_id, thread_id, activity_id, computer, user_sid, data, flags)
VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?))";

constexpr const char* insert_log = R"(INSERT INTO log
(path, kind, sha256, size, first_time, last_time, events, findings, selection, reader)
VALUES (?, ?, nullif(?, ''), ?, nullif(?, ''), nullif(?, ''), 0, ?, ?, ?))";

constexpr const char* insert_finding = R"(INSERT INTO finding
(log, kind, weight, offset, chunk, record, detail) VALUES (?, ?, ?, ?, ?, ?, ?))";

}  // namespace

case_rows::case_rows(case_file& file) : file_(file), base_(file.base()) {
  event_ = base_.prepare(insert_event);
  finding_ = base_.prepare(insert_finding);
  const bool ready = event_.prepared() && finding_.prepared() && channels_.open(base_, "channel") &&
                     providers_.open(base_, "provider") && computers_.open(base_, "computer") &&
                     sids_.open(base_, "sid");
  if (!ready) fail();
}

kept_log case_rows::find(const log_row& log) {
  statement asked = base_.prepare(
      log.sha256.empty()
          ? "SELECT id, path, selection FROM log WHERE sha256 IS NULL AND path = ? AND size = ?"
          : "SELECT id, path, selection FROM log WHERE sha256 = ?");
  const std::string_view path = clean_text(log.path, scratch_);
  if (log.sha256.empty()) {
    asked.bind(1, path).bind(2, static_cast<std::int64_t>(log.size));
  } else {
    asked.bind(1, log.sha256);
  }
  if (!asked.next()) return {};
  return {asked.integer(0), std::string(asked.text(1)), std::string(asked.text(2))};
}

bool case_rows::begin(const log_row& log) {
  if (failed()) return false;
  error_ = file_.start_adding();
  if (failed()) return false;
  if (!base_.run("BEGIN IMMEDIATE")) return fail();
  first_event_ = base_.number("SELECT max(id) FROM event") + 1;
  events_ = 0;
  statement add = base_.prepare(insert_log);
  add.bind(1, clean_text(log.path, scratch_)).bind(2, log.kind).bind(3, log.sha256);
  add.bind(4, static_cast<std::int64_t>(log.size)).bind(5, log.first_time).bind(6, log.last_time);
  add.bind(7, static_cast<std::int64_t>(log.findings)).bind(8, log.selection).bind(9, log.reader);
  if (!add.run()) return fail();
  log_ = base_.last_id();
  return true;
}

bool case_rows::add_finding(const finding_row& found) {
  finding_.bind(1, log_).bind(2, found.kind).bind(3, found.weight);
  bind_number(finding_, 4, found.offset);
  const auto bind_some = [this](int parameter, const std::uint64_t* number) {
    if (number) {
      bind_number(finding_, parameter, *number);
    } else {
      finding_.bind_null(parameter);
    }
  };
  bind_some(5, found.chunk);
  bind_some(6, found.record);
  finding_.bind(7, clean_text(found.detail, scratch_));
  return finding_.run() || fail();
}

bool case_rows::add_finding_from(const statement& row, int first) {
  constexpr int values = 6;
  finding_.bind(1, log_);
  for (int i = 0; i < values; ++i) {
    const int column = first + i, parameter = i + 2;
    if (row.is_integer(column)) {
      finding_.bind(parameter, row.integer(column));
    } else if (row.is_null(column)) {
      finding_.bind_null(parameter);
    } else {
      finding_.bind(parameter, row.text(column));
    }
  }
  return finding_.run() || fail();
}

bool case_rows::add_event() {
  if (failed()) return false;
  bind(event_column::log, log_);
  ++events_;
  return event_.run() || fail();
}

bool case_rows::commit() {
  if (failed()) return false;
  statement count = base_.prepare("UPDATE log SET events = ? WHERE id = ?");
  if (!count.bind(1, events_).bind(2, log_).run()) return fail();
  if (file_.has_full_text() && events_ != 0) {
    statement add = base_.prepare(full_text_add());
    if (!add.bind(1, first_event_).run()) return fail();
  }
  return base_.run("COMMIT") || fail();
}

void case_rows::bind_shared(event_column column, std::string_view text) {
  const std::int64_t id = table_of(column).id_of(text);
  bind(column, id);
  if (id == 0) fail();
}

void case_rows::bind_copy(event_column column, std::string_view text) {
  event_.bind_copy(int(column), clean_text(text, scratch_));
}

void case_rows::bind_number(statement& to, int parameter, std::uint64_t number) {
  if (number <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
    to.bind(parameter, static_cast<std::int64_t>(number));
    return;
  }
  std::string text = "0x";
  append_hex(text, number, 16);
  to.bind_copy(parameter, text);
}

lookup_table& case_rows::table_of(event_column column) {
  switch (column) {
    case event_column::channel:
      return channels_;
    case event_column::provider:
      return providers_;
    case event_column::computer:
      return computers_;
    default:
      return sids_;
  }
}

bool case_rows::fail() {
  if (error_.empty()) {
    error_ = base_.error();
    undo();
  }
  return false;
}

void case_rows::undo() {
  if (base_.in_transaction()) (void)base_.run("ROLLBACK");
  for (lookup_table* table : {&channels_, &providers_, &computers_, &sids_}) table->forget();
}

void case_rows::abandon(const std::string& why) {
  if (error_.empty()) error_ = why;
  undo();
}

void case_rows::leave_out() { undo(); }

}  // namespace zanvik
