#include "base/digits.h"
#include "export/line_text.h"
#include "inspect/chunk_state.h"
#include "inspect/forms/ledger_forms.h"

namespace zanvik {
namespace {

// A row under construction; cells in the order of the header.
struct csv_row {
  std::string_view row, name;
  std::optional<std::uint64_t> offset{}, chunk{}, record{}, records{}, bytes{};
  std::string_view value{}, meaning{};
};

void append_cell(std::string& out, std::string_view text) {
  append_csv_cell(out, text, cell_quotes::where_needed);
}

class csv_writer {
 public:
  csv_writer(std::string& out, const std::string& log) : out_(out), log_(log) {}

  void add(const csv_row& row) {
    append_cell(out_, log_);
    text(row.row);
    text(row.name);
    for (const auto& number : {row.offset, row.chunk, row.record, row.records, row.bytes}) {
      out_ += ',';
      if (number) append_decimal(out_, *number);
    }
    text(row.value);
    text(row.meaning);
    out_ += '\n';
  }

 private:
  void text(std::string_view cell) {
    out_ += ',';
    append_cell(out_, cell);
  }

  std::string& out_;
  const std::string& log_;
};

std::string fact_text(const log_fact& fact) {
  if (const bool* yes = std::get_if<bool>(&fact.value)) return *yes ? "true" : "false";
  if (const auto* number = std::get_if<std::uint64_t>(&fact.value)) return std::to_string(*number);
  return std::get<std::string>(fact.value);
}

std::string chunk_text(const chunk_summary& chunk) {
  std::string text(chunk_state_name(chunk.state));
  if (chunk.state != chunk_state::sound) return text;
  text += " declared " + std::to_string(chunk.declared_first) + " to " +
          std::to_string(chunk.declared_last) + " found " + std::to_string(chunk.found_first) +
          " to " + std::to_string(chunk.found_last);
  if (!chunk.header_checksum_good) text += " header checksum wrong";
  if (!chunk.data_checksum_good) text += " data checksum wrong";
  return text;
}

}  // namespace

void append_ledger_csv(std::string& out, log_ledger& ledger) {
  csv_writer csv(out, ledger.path);
  csv.add({.row = "fact", .name = "sha256", .value = ledger.sha256});
  csv.add({.row = "fact", .name = "size", .bytes = ledger.size});
  for (const log_fact& fact : ledger.facts) {
    const std::string text = fact_text(fact);
    csv.add({.row = "fact", .name = fact.name, .value = text});
  }
  log_account& account = ledger.account;
  csv.add({.row = "account", .name = "declared", .records = account.declared});
  csv.add({.row = "account", .name = "missing", .records = account.missing});
  csv.add({.row = "account", .name = "read", .records = account.given()});
  csv.add({.row = "account", .name = "read_with_slack", .records = account.given_with_slack});
  for (std::size_t i = 0; i < area_kinds; ++i) {
    const auto kind = static_cast<area_kind>(i);
    account_line& line = account.line(kind);
    if (line.bytes == 0 && line.records == 0) continue;
    csv_row row{.row = "account", .name = area_name(kind), .bytes = line.bytes};
    if (holds_records(kind)) row.records = line.records;
    const std::string numbers = ranges_text(line.numbers, 100);
    row.value = numbers;
    csv.add(row);
  }
  const auto counts = [&csv](std::string_view name, const std::vector<name_count>& list) {
    for (const name_count& one : list) {
      csv.add({.row = "count", .name = name, .records = one.count, .value = one.name});
    }
  };
  counts("event", ledger.events);
  counts("channel", ledger.channels);
  counts("computer", ledger.computers);
  counts("user", ledger.users);
  counts("day", ledger.days);
  for (const chunk_summary& chunk : ledger.chunks) {
    const std::string text = chunk_text(chunk);
    csv.add({.row = "chunk",
             .name = chunk_state_name(chunk.state),
             .offset = chunk.offset,
             .chunk = chunk.index,
             .records = chunk.records,
             .bytes = chunk.used_bytes,
             .value = text});
  }
  for (const finding& found : ledger.findings.kept()) {
    csv.add({.row = found.weight == finding_weight::finding ? "finding" : "note",
             .name = finding_name(found.kind),
             .offset = found.offset,
             .chunk = found.chunk,
             .record = found.record,
             .value = found.detail,
             .meaning = finding_meaning(found.kind)});
  }
}

}  // namespace zanvik
