#include "report/highlights.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>

#include "base/text.h"
#include "base/time_value.h"
#include "report/html_writer.h"
#include "report/report_times.h"
#include "report/table_reader.h"

namespace zanvik {
namespace {

constexpr std::size_t named_values = 4;    // in one sentence
constexpr std::size_t most_guesses = 6;    // sentences about guessed passwords
constexpr std::uint64_t few_failures = 5;  // anybody mistypes that often
constexpr double short_jump = 60;          // seconds that a clock may be off

// Rows of one kind: how many, when, and the most frequent values of a column.
struct row_summary {
  std::uint64_t count = 0, first = 0, last = 0;
  std::map<std::string_view, std::uint64_t> values;

  void add(std::uint64_t time, std::string_view value) {
    if (count++ == 0) first = time;
    last = time;
    if (!value.empty()) ++values[value];
  }

  // "a (3), b and 2 more"; numbers only if `counts`.
  std::string names(bool counts) const {
    std::vector<std::pair<std::string_view, std::uint64_t>> order(values.begin(), values.end());
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    std::string out;
    for (std::size_t i = 0; i < std::min(order.size(), named_values); ++i) {
      if (i != 0) out += ", ";
      append_visible(out, order[i].first, 120);
      if (counts) out += " (" + grouped(order[i].second) + ")";
    }
    if (order.size() > named_values)
      out += " and " + grouped(order.size() - named_values) + " more";
    return out;
  }
  std::string when() const {
    return count == 1 ? "on " + time_text(first)
                      : "from " + time_text(first) + " to " + time_text(last);
  }
};

bool is_own_machine(std::string_view address) {
  return address.empty() || address == "127.0.0.1" || address == "::1" ||
         equal_nocase(address, "local");
}

// "+3600.000"; 0 for what is no number.
double number_in(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string times_text(std::uint64_t count) {
  return count == 1 ? "once" : grouped(count) + " times";
}

class finder {
 public:
  explicit finder(const report_collector& collected) : collected_(collected) {}

  std::vector<highlight> run() {
    add_matches();
    add_defender();
    add_cleared();
    add_guesses();
    add_group_members();
    add_failures();
    add_kind("accounts", "what", "account created", "account", highlight_weight::middle,
             "account was created", "accounts were created");
    add_kind("accounts", "what", "password reset", "account", highlight_weight::plain,
             "password was reset", "passwords were reset");
    add_clock();
    add_kind("services", "what", "service installed", "service", highlight_weight::middle,
             "service was installed", "services were installed");
    add_kind("tasks", "what", "task created", "task", highlight_weight::middle,
             "scheduled task was created", "scheduled tasks were created");
    add_remote();
    add_kind("cleared", "what", "audit policy changed", "account", highlight_weight::middle,
             "change of what is audited", "changes of what is audited");
    add_kind("starts_and_stops", "what", "unexpected shutdown before", "", highlight_weight::plain,
             "unexpected shutdown", "unexpected shutdowns");
    add_kind("usb", "", "", "device", highlight_weight::plain, "event of a USB device",
             "events of USB devices");
    std::stable_sort(found_.begin(), found_.end(), [](const highlight& a, const highlight& b) {
      return a.weight != b.weight ? a.weight < b.weight : a.first < b.first;
    });
    return std::move(found_);
  }

 private:
  using condition = std::function<bool(std::size_t row)>;

  static row_summary summarize(const table_reader& table, std::string_view named,
                               const condition& wanted) {
    row_summary seen;
    const std::size_t column = named.empty() ? 0 : table.column(named);
    for (std::size_t row = 0; row < table.rows(); ++row) {
      if (!wanted(row)) continue;
      seen.add(table.time(row), named.empty() ? std::string_view() : table.text(row, column));
    }
    return seen;
  }

  void add(highlight_weight weight, std::string text, std::string_view table, std::string_view find,
           const row_summary& rows) {
    found_.push_back({weight, std::move(text), table, std::string(find), rows.first, rows.last});
  }

  // "3 accounts were created: a, b, c; from … to …", of rows whose column has a value.
  void add_kind(std::string_view name, std::string_view by, std::string_view value,
                std::string_view named, highlight_weight weight, std::string_view one,
                std::string_view many) {
    const table_reader table(collected_, name);
    const std::size_t column = by.empty() ? 0 : table.column(by);
    const row_summary rows = summarize(table, named, [&](std::size_t row) {
      return by.empty() || table.text(row, column) == value;
    });
    if (rows.count == 0) return;
    std::string text = counted(rows.count, one, many);
    if (!rows.values.empty()) text += ": " + rows.names(rows.count > rows.values.size());
    add(weight, text + "; " + rows.when(), name, value, rows);
  }

  void add_matches() {
    const table_reader table(collected_, "matches");
    const std::size_t level = table.column("level");
    for (const char* const wanted : {"critical", "high"}) {
      const row_summary rows = summarize(
          table, "rule", [&](std::size_t row) { return table.text(row, level) == wanted; });
      if (rows.count == 0) continue;
      add(highlight_weight::high,
          counted(rows.count, "match", "matches") + " of rules of level " + wanted + ": " +
              rows.names(true),
          "matches", wanted, rows);
    }
  }

  void add_defender() {
    const table_reader table(collected_, "defender");
    const std::size_t what = table.column("what"), threat = table.column("threat");
    const row_summary threats = summarize(
        table, "threat", [&](std::size_t row) { return !table.text(row, threat).empty(); });
    if (threats.count != 0) {
      add(highlight_weight::high,
          "Defender reported " + counted(threats.values.size(), "threat", "threats") + ": " +
              threats.names(true) + "; " + threats.when(),
          "defender", "", threats);
    }
    const row_summary off = summarize(table, "", [&](std::size_t row) {
      return table.text(row, what).find(" off") != std::string_view::npos;
    });
    if (off.count != 0) {
      add(highlight_weight::high, "Protection by Defender was turned off " + off.when(), "defender",
          "off", off);
    }
  }

  void add_cleared() {
    const table_reader table(collected_, "cleared");
    const std::size_t what = table.column("what");
    const auto is_cleared = [&](std::size_t row) {
      return table.text(row, what).ends_with("log cleared");
    };
    const row_summary rows = summarize(table, "log_name", is_cleared);
    if (rows.count == 0) return;
    const row_summary people = summarize(table, "account", is_cleared);
    std::string text = "Logs were cleared " + times_text(rows.count) + ": " + rows.names(true) +
                       "; " + rows.when();
    if (!people.values.empty()) text += ", by " + people.names(false);
    add(highlight_weight::high, text, "cleared", "cleared", rows);
  }

  // A logon from an address from which many failed during the day before.
  void add_guesses() {
    const table_reader failed(collected_, "failed_logons"), logons(collected_, "logons");
    std::map<std::string_view, std::vector<std::uint64_t>> failures;  // by address; in order
    const std::size_t from = failed.column("source_address");
    for (std::size_t row = 0; row < failed.rows(); ++row) {
      const std::string_view address = failed.text(row, from);
      if (!is_own_machine(address)) failures[address].push_back(failed.time(row));
    }
    std::map<std::pair<std::string_view, std::string_view>, bool> known;  // address and account
    const std::size_t address = logons.column("source_address"), account = logons.column("account");
    std::size_t told = 0;
    for (std::size_t row = 0; row < logons.rows() && told < most_guesses; ++row) {
      const auto seen = failures.find(logons.text(row, address));
      if (seen == failures.end()) continue;
      const std::uint64_t time = logons.time(row);
      const auto& times = seen->second;
      const auto before = std::upper_bound(times.begin(), times.end(), time);
      const auto since = std::lower_bound(times.begin(), before,
                                          time - std::min(time, std::uint64_t{qx::ticks_per_day}));
      const auto count = static_cast<std::uint64_t>(before - since);
      if (count < few_failures) continue;
      const std::string_view who = logons.text(row, account);
      if (!known.try_emplace({seen->first, who}, true).second) continue;
      ++told;
      row_summary rows;
      rows.add(*since, "");
      rows.add(time, "");
      add(highlight_weight::high,
          std::string(who) + " logged on from " + std::string(seen->first) + " on " +
              time_text(time) + ", after " + counted(count, "failed logon", "failed logons") +
              " from there within a day",
          "logons", seen->first, rows);
    }
  }

  void add_failures() {
    const table_reader table(collected_, "failed_logons");
    const auto all = [](std::size_t) { return true; };
    const row_summary accounts = summarize(table, "account", all);
    if (accounts.count < few_failures) return;
    const row_summary addresses = summarize(table, "source_address", all);
    std::string text = counted(accounts.count, "failed logon", "failed logons") + ", most as " +
                       accounts.names(true);
    if (!addresses.values.empty()) text += "; from " + addresses.names(true);
    add(highlight_weight::middle, text, "failed_logons", "", accounts);
  }

  void add_group_members() {
    const table_reader table(collected_, "groups");
    const std::size_t what = table.column("what"), group = table.column("group_name"),
                      member = table.column("member"), sid = table.column("member_sid");
    row_summary rows;
    std::vector<std::string> names(table.rows());
    for (std::size_t row = 0; row < table.rows(); ++row) {
      const std::string_view name = table.text(row, group);
      if (table.text(row, what) != "member added" || !contains_nocase(name, "admin")) continue;
      const std::string_view who = table.text(row, member);
      names[row] =
          std::string(who.empty() ? table.text(row, sid) : who) + " to " + std::string(name);
      rows.add(table.time(row), names[row]);
    }
    if (rows.count == 0) return;
    add(highlight_weight::high,
        "Members were added to groups of administrators: " + rows.names(false) + "; " + rows.when(),
        "groups", "added", rows);
  }

  void add_clock() {
    const table_reader table(collected_, "clock_changes");
    const std::size_t seconds = table.column("offset_seconds");
    const row_summary rows = summarize(table, "offset_seconds", [&](std::size_t row) {
      return std::abs(number_in(table.text(row, seconds))) > short_jump;
    });
    if (rows.count == 0) return;
    add(highlight_weight::middle,
        "The clock was set by more than a minute " + times_text(rows.count) +
            "; seconds: " + rows.names(false) + "; " + rows.when(),
        "clock_changes", "", rows);
  }

  void add_remote() {
    const table_reader table(collected_, "logons");
    const std::size_t type = table.column("logon_type"), from = table.column("source_address");
    const auto is_remote = [&](std::size_t row) {
      return table.text(row, type).starts_with("remote interactive") &&
             !is_own_machine(table.text(row, from));
    };
    const row_summary addresses = summarize(table, "source_address", is_remote);
    if (addresses.count == 0) return;
    const row_summary accounts = summarize(table, "account", is_remote);
    add(highlight_weight::plain,
        counted(addresses.count, "remote desktop logon", "remote desktop logons") + ", by " +
            accounts.names(true) + ", from " + addresses.names(true),
        "logons", "remote", addresses);
  }

  const report_collector& collected_;
  std::vector<highlight> found_;
};

}  // namespace

std::vector<highlight> find_highlights(const report_collector& collected) {
  return finder(collected).run();
}

}  // namespace zanvik
