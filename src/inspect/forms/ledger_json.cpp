#include "inspect/chunk_state.h"
#include "inspect/forms/json_writer.h"
#include "inspect/forms/ledger_forms.h"

namespace zanvik {
namespace {

void append_facts(json_writer& json, const log_ledger& ledger) {
  json.open("facts", '{');
  for (const log_fact& fact : ledger.facts) {
    std::visit([&](const auto& value) { json.member(fact.name, value); }, fact.value);
  }
  json.close('}');
}

void append_account(json_writer& json, log_ledger& ledger) {
  log_account& account = ledger.account;
  json.open("account", '{');
  json.member("bytes", account.bytes());
  json.member("declared", account.declared);
  json.member("missing", account.missing);
  json.member("found", account.found());
  json.member("read", account.given());
  json.member("read_with_slack", account.given_with_slack);
  json.open("lines", '[');
  for (std::size_t i = 0; i < area_kinds; ++i) {
    const auto kind = static_cast<area_kind>(i);
    account_line& line = account.line(kind);
    if (line.bytes == 0 && line.records == 0) continue;
    json.open({}, '{');
    json.member("name", area_name(kind));
    json.member("bytes", line.bytes);
    if (holds_records(kind)) {
      json.member("records", line.records);
      json.open("numbers", '[');
      for (const auto& [first, last] : line.numbers.joined()) {
        json.open({}, '[');
        json.element(first);
        json.element(last);
        json.close(']');
      }
      json.close(']');
      if (line.numbers.cut()) json.member("numbers_cut", true);
    }
    json.close('}');
  }
  json.close(']');
  json.close('}');
}

void append_counts(json_writer& json, std::string_view name,
                   const std::vector<name_count>& counts) {
  json.open(name, '[');
  for (const name_count& one : counts) {
    json.open({}, '{');
    json.member("name", one.name);
    json.member("count", one.count);
    json.close('}');
  }
  json.close(']');
}

void append_chunks(json_writer& json, const log_ledger& ledger) {
  json.open("chunks", '[');
  for (const chunk_summary& chunk : ledger.chunks) {
    json.open({}, '{');
    json.member("chunk", chunk.index);
    json.member("offset", chunk.offset);
    json.member("state", chunk_state_name(chunk.state));
    if (chunk.state == chunk_state::sound) {
      json.member("declared_first", chunk.declared_first);
      json.member("declared_last", chunk.declared_last);
      json.member("records", std::uint64_t{chunk.records});
      json.member("found_first", chunk.found_first);
      json.member("found_last", chunk.found_last);
      json.member("used_bytes", std::uint64_t{chunk.used_bytes});
      json.member("header_checksum_good", chunk.header_checksum_good);
      json.member("data_checksum_good", chunk.data_checksum_good);
    }
    json.close('}');
  }
  json.close(']');
}

void append_findings(json_writer& json, const log_ledger& ledger) {
  json.open("findings", '[');
  for (const finding& found : ledger.findings.kept()) {
    json.open({}, '{');
    json.member("name", finding_name(found.kind));
    json.member("weight", found.weight == finding_weight::finding ? "finding" : "note");
    json.member("offset", found.offset);
    if (found.chunk) json.member("chunk", *found.chunk);
    if (found.record) json.member("record", *found.record);
    json.member("detail", found.detail);
    json.member("may_mean", finding_meaning(found.kind));
    json.close('}');
  }
  json.close(']');
  json.open("finding_counts", '{');
  for (std::size_t i = 0; i < finding_kinds; ++i) {
    const auto kind = static_cast<finding_kind>(i);
    if (ledger.findings.count(kind) != 0) {
      json.member(finding_name(kind), ledger.findings.count(kind));
    }
  }
  json.close('}');
}

}  // namespace

void append_ledger_json(std::string& out, log_ledger& ledger) {
  json_writer json(out);
  json.open({}, '{');
  json.member("log", ledger.path);
  json.member("format", ledger.format);
  json.member("size", ledger.size);
  json.member("sha256", ledger.sha256);
  json.member("whole", !ledger.findings.any_finding());
  append_facts(json, ledger);
  append_account(json, ledger);
  append_counts(json, "events", ledger.events);
  append_counts(json, "channels", ledger.channels);
  append_counts(json, "computers", ledger.computers);
  append_counts(json, "users", ledger.users);
  append_counts(json, "days", ledger.days);
  append_findings(json, ledger);
  append_chunks(json, ledger);
  json.close('}');
  out += '\n';
}

}  // namespace zanvik
