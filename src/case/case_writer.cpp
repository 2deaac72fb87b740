#include "case/case_writer.h"

#include <array>

#include "case/case_schema.h"
#include "inspect/finding.h"

namespace zanvik {
namespace {

std::string fact(const log_ledger& ledger, std::string_view name) {
  for (const log_fact& known : ledger.facts) {
    const auto* const text = std::get_if<std::string>(&known.value);
    if (known.name == name && text) return *text;
  }
  return {};
}

// From "2024-01-15 08:00:00", as a ledger has it, to the form of an event's time.
std::string iso_time(std::string text) {
  if (text.size() > 10) {
    text[10] = 'T';
    text += 'Z';
  }
  return text;
}

// All findings, also those that are only counted; no notes.
std::uint64_t count_findings(const finding_list& list) {
  std::array<std::uint64_t, finding_kinds> kept{}, findings{};
  for (const finding& found : list.kept()) {
    ++kept[static_cast<std::size_t>(found.kind)];
    findings[static_cast<std::size_t>(found.kind)] += found.weight == finding_weight::finding;
  }
  std::uint64_t count = 0;
  for (std::size_t kind = 0; kind < finding_kinds; ++kind) {
    const bool all = findings[kind] != 0 && findings[kind] == kept[kind];
    count += all ? list.count(static_cast<finding_kind>(kind)) : findings[kind];
  }
  return count;
}

}  // namespace

log_row row_of(const log_ledger& ledger) {
  log_row row;
  row.path = ledger.path;
  row.kind = ledger.format;
  row.sha256 = ledger.sha256;
  row.size = ledger.size;
  row.first_time = iso_time(fact(ledger, "first_time"));
  row.last_time = iso_time(fact(ledger, "last_time"));
  row.findings = count_findings(ledger.findings);
  return row;
}

bool case_writer::add_findings(const log_ledger& ledger) {
  for (const finding& found : ledger.findings.kept()) {
    finding_row row;
    row.kind = finding_name(found.kind);
    row.weight = found.weight == finding_weight::finding ? "finding" : "note";
    row.offset = found.offset;
    row.chunk = found.chunk ? &*found.chunk : nullptr;
    row.record = found.record ? &*found.record : nullptr;
    row.detail = found.detail;
    if (!rows_.add_finding(row)) return false;
  }
  return true;
}

void case_writer::on_event(const event_view& event) {
  if (rows_.failed()) return;
  const event_header& header = event.header();
  rows_.bind_number(event_column::offset, header.file_offset);
  rows_.bind_number(event_column::record, header.record_number);
  bind_times(event.time());
  bind_system(event);
  bool lossy = false;
  rows_.bind(event_column::data, data_.of(event, lossy));
  rows_.bind(event_column::flags, std::int64_t{header.flags | (lossy ? lossy_flag : 0)});
  (void)rows_.add_event();
}

void case_writer::bind_times(std::uint64_t filetime) {
  constexpr std::int64_t epoch = 11'644'473'600'000'000;  // 1970, in microseconds since 1601
  const auto bytes = static_cast<std::size_t>(write_iso_time(time_, filetime) - time_);
  rows_.bind(event_column::time, std::string_view(time_, bytes));
  rows_.bind(event_column::time_us, static_cast<std::int64_t>(filetime / 10) - epoch);
}

void case_writer::bind_system(const event_view& event) {
  using enum event_column;
  bind_shared(channel, event, system_member::channel);
  bind_shared(provider, event, system_member::provider_name);
  bind_number(event_id, event, system_member::event_id);
  bind_number(version, event, system_member::version);
  bind_number(level, event, system_member::level);
  bind_number(task, event, system_member::task);
  bind_number(opcode, event, system_member::opcode);
  bind_number(process_id, event, system_member::process_id);
  bind_number(thread_id, event, system_member::thread_id);
  bind_shared(computer, event, system_member::computer);
  bind_shared(user_sid, event, system_member::user_id);
  const std::string_view activity = event.text(system_member::activity_id, scratch_);
  if (activity.empty()) {
    rows_.bind_null(activity_id);
  } else {
    rows_.bind_copy(activity_id, activity);
  }
  std::uint64_t bits = 0;
  if (event.number(system_member::keywords, bits)) {
    rows_.bind(keywords, static_cast<std::int64_t>(bits));
  } else {
    bind_number(keywords, event, system_member::keywords);
  }
}

// A number; the text of what is none; nothing for what is not there.
void case_writer::bind_number(event_column column, const event_view& event, system_member member) {
  std::uint64_t number = 0;
  if (event.number(member, number)) {
    rows_.bind_number(column, number);
    return;
  }
  const std::string_view text = event.text(member, scratch_);
  if (text.empty()) {
    rows_.bind_null(column);
  } else {
    rows_.bind_copy(column, text);
  }
}

void case_writer::bind_shared(event_column column, const event_view& event, system_member member) {
  const std::string_view text = event.text(member, scratch_);
  if (text.empty()) {
    rows_.bind_null(column);
  } else {
    rows_.bind_shared(column, text);
  }
}

}  // namespace zanvik
