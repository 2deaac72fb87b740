#include <algorithm>

#include "inspect/chunk_state.h"
#include "inspect/forms/ledger_forms.h"

namespace zanvik {
namespace {

constexpr std::size_t shown_of_a_kind = 10;
constexpr std::size_t shown_ranges = 6;

// "1,234,567"
std::string grouped(std::uint64_t value) {
  std::string text = std::to_string(value);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

// Control characters, which could write over other lines of a terminal, become '?'.
std::string printable(std::string_view text) {
  std::string out(text);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const auto c = static_cast<unsigned char>(out[i]);
    const bool c1 =
        c == 0xc2 && i + 1 < out.size() && static_cast<unsigned char>(out[i + 1]) < 0xa0;
    if (c < 0x20 || c == 0x7f) out[i] = '?';
    if (c1) out[i] = out[i + 1] = '?';
  }
  return out;
}

void pad_left(std::string& out, std::string_view text, std::size_t width) {
  out.append(width - std::min(width, text.size()), ' ');
  out += text;
}
void pad_right(std::string& out, std::string_view text, std::size_t width) {
  out += text;
  out.append(width - std::min(width, text.size()), ' ');
}

void append_facts(std::string& out, const log_ledger& ledger) {
  out += "  ";
  std::size_t column = 2;
  for (const log_fact& fact : ledger.facts) {
    std::string text = fact.name;
    std::replace(text.begin(), text.end(), '_', ' ');
    if (const bool* yes = std::get_if<bool>(&fact.value)) {
      text += *yes ? " yes" : " no";
    } else if (const auto* number = std::get_if<std::uint64_t>(&fact.value)) {
      text += ' ' + std::to_string(*number);
    } else {
      text += ' ' + printable(std::get<std::string>(fact.value));
    }
    if (column != 2 && column + text.size() + 2 > 98) {
      out += "\n  ";
      column = 2;
    } else if (column != 2) {
      out += ", ";
    }
    out += text;
    column += text.size() + 2;
  }
  out += '\n';
}

void append_line(std::string& out, std::string_view name, std::string_view records,
                 std::string_view bytes, std::string_view numbers) {
  out += "  ";
  pad_right(out, name, 46);
  pad_left(out, records, 12);
  pad_left(out, bytes, 18);
  if (!numbers.empty()) {
    out += "  ";
    out += numbers;
  }
  out += '\n';
}

void append_account(std::string& out, log_ledger& ledger) {
  log_account& account = ledger.account;
  append_line(out, "account", "records", "bytes", "record numbers");
  for (std::size_t i = 0; i < area_kinds; ++i) {
    const auto kind = static_cast<area_kind>(i);
    account_line& line = account.line(kind);
    if (line.bytes == 0 && line.records == 0) continue;
    const bool counted = holds_records(kind);
    append_line(out, area_text(kind), counted ? grouped(line.records) : "-", grouped(line.bytes),
                ranges_text(line.numbers, shown_ranges));
  }
  append_line(out, "sum: live records; size of the log", grouped(account.found()),
              grouped(account.bytes()), {});
  append_line(out, "declared by headers", grouped(account.declared), "-", {});
  append_line(out, "declared but not found", grouped(account.missing), "-", {});
  append_line(out, "shown by export", grouped(account.given()), "-", {});
  append_line(out, "shown by export --slack", grouped(account.given_with_slack), "-", {});
}

void append_chunks(std::string& out, const log_ledger& ledger) {
  out += "  chunk      offset  records             declared                found  checksums\n";
  for (const chunk_summary& chunk : ledger.chunks) {
    if (chunk.state == chunk_state::empty) continue;
    pad_left(out, std::to_string(chunk.index), 7);
    pad_left(out, std::to_string(chunk.offset), 12);
    if (chunk.state == chunk_state::foreign) {
      out += "  no signature\n";
      continue;
    }
    pad_left(out, std::to_string(chunk.records), 9);
    const auto range = [&out](std::uint64_t first, std::uint64_t last) {
      pad_left(out,
               first > last || last == ~std::uint64_t{0}
                   ? "-"
                   : std::to_string(first) + " to " + std::to_string(last),
               21);
    };
    range(chunk.declared_first, chunk.declared_last);
    range(chunk.found_first, chunk.found_last);
    out += chunk.header_checksum_good ? "  good" : "  wrong";
    out += chunk.data_checksum_good ? ", good\n" : ", wrong\n";
  }
}

// The most frequent ones of each sort, and days in order.
void append_counts(std::string& out, const log_ledger& ledger) {
  const auto list = [&out](std::string_view title, const std::vector<name_count>& counts,
                           std::size_t most) {
    if (counts.empty()) return;
    out += "  ";
    out += title;
    if (counts.size() > most) {
      out += ", " + std::to_string(most) + " of " + grouped(counts.size());
    }
    out += '\n';
    for (std::size_t i = 0; i < counts.size() && i < most; ++i) {
      pad_left(out, grouped(counts[i].count), 14);
      out += "  " + printable(counts[i].name) + '\n';
    }
  };
  list("events by ID and provider", ledger.events, 10);
  list("channels", ledger.channels, 5);
  list("computers", ledger.computers, 5);
  list("users", ledger.users, 5);
  // Of many days, the busiest.
  std::vector<name_count> days = ledger.days;
  if (days.size() > shown_of_a_kind) {
    std::stable_sort(days.begin(), days.end(),
                     [](const name_count& a, const name_count& b) { return a.count > b.count; });
  }
  list("events by day", days, shown_of_a_kind);
}

void append_finding(std::string& out, const finding& found) {
  out += "    at ";
  pad_left(out, std::to_string(found.offset), 10);
  if (found.chunk) out += ", chunk " + std::to_string(*found.chunk);
  if (found.record) out += ", record " + std::to_string(*found.record);
  if (!found.detail.empty()) out += ": " + printable(found.detail);
  out += '\n';
}

// The findings of one weight, kind by kind, each with what it may mean.
void append_findings(std::string& out, const log_ledger& ledger, finding_weight weight,
                     std::string_view title) {
  const auto& kept = ledger.findings.kept();
  bool first = true;
  for (std::size_t i = 0; i < finding_kinds; ++i) {
    const auto kind = static_cast<finding_kind>(i);
    std::uint64_t shown = 0;
    for (const finding& found : kept) {
      if (found.kind != kind || found.weight != weight) continue;
      if (first) out += title;
      first = false;
      if (shown == 0) {
        out += "  ";
        out += finding_name(kind);
        out += ": ";
        out += finding_meaning(kind);
        out += '\n';
      }
      if (++shown <= shown_of_a_kind) append_finding(out, found);
    }
    if (shown > shown_of_a_kind) {
      out += "    and " + grouped(ledger.findings.count(kind) - shown_of_a_kind) + " more\n";
    }
  }
}

}  // namespace

std::string ranges_text(number_ranges& numbers, std::size_t most) {
  std::string text;
  std::size_t shown = 0;
  for (const auto& [first, last] : numbers.joined()) {
    if (shown != 0) text += ", ";
    if (shown++ == most) return text + "...";
    text += std::to_string(first);
    if (last != first) text += " to " + std::to_string(last);
  }
  return numbers.cut() ? text + ", ..." : text;
}

void append_ledger_table(std::string& out, log_ledger& ledger, const table_options& options) {
  out += printable(ledger.path) + '\n';
  out += "  " + grouped(ledger.size) + " bytes, " + ledger.format + ", SHA-256 " +
         (ledger.sha256.empty() ? "not known" : ledger.sha256) + '\n';
  append_facts(out, ledger);
  append_account(out, ledger);
  if (options.chunks && !ledger.chunks.empty()) append_chunks(out, ledger);
  append_counts(out, ledger);
  append_findings(out, ledger, finding_weight::finding, "  findings\n");
  append_findings(out, ledger, finding_weight::note, "  notes\n");
  out += ledger.findings.any_finding() ? "  with findings\n\n" : "  whole\n\n";
}

}  // namespace zanvik
