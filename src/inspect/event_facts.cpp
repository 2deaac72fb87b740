#include "inspect/event_facts.h"

#include <algorithm>
#include <cstring>

#include "base/digits.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

// How far a clock change may be from the times that it explains: its own event is written after it,
// and the record before the jump some time before it.
constexpr std::uint64_t change_slack = 10 * 60 * qx::ticks_per_second;

constexpr std::string_view log_service = "Microsoft-Windows-Eventlog";
constexpr std::string_view old_log_service = "EventLog";
constexpr std::string_view security = "Microsoft-Windows-Security-Auditing";
constexpr std::string_view kernel = "Microsoft-Windows-Kernel-General";

struct sign_row {
  std::uint64_t id;
  std::string_view provider;
  finding_kind kind;
  std::string_view what;
};
constexpr sign_row signs[] = {
    {1102, log_service, finding_kind::log_cleared, "the security log was cleared"},
    {104, log_service, finding_kind::log_cleared, "a log was cleared"},
    {517, "Security", finding_kind::log_cleared, "the security log was cleared"},
    {1100, log_service, finding_kind::service_stopped, "the event log service shut down"},
    {6006, old_log_service, finding_kind::service_stopped, "the event log service stopped"},
    {6005, old_log_service, finding_kind::service_started, "the event log service started"},
    {6008, old_log_service, finding_kind::shutdown_unexpected, "the last shutdown was unexpected"},
};

std::uint64_t distance(std::uint64_t a, std::uint64_t b) { return a < b ? b - a : a - b; }

std::uint64_t filetime_of(const event_view& event, std::string_view name) {
  const std::int32_t field = event.shape().find_datum(name);
  if (field < 0) return 0;
  const event_value value = event.value(static_cast<std::uint32_t>(field));
  std::uint64_t time = 0;
  if (value.type == value_type::filetime && value.size == sizeof(time)) {
    std::memcpy(&time, value.data, sizeof(time));
  }
  return time;
}

}  // namespace

void event_facts::name_counts::add(std::string_view name) {
  const auto known = counts_.find(name);
  if (known != counts_.end()) {
    ++known->second;
  } else if (counts_.size() < limits::counted_names) {
    counts_.emplace(name, 1);
  } else {
    ++others_;
  }
}

std::vector<name_count> event_facts::name_counts::sorted() const {
  std::vector<name_count> list;
  for (const auto& [name, count] : counts_) list.push_back({name, count});
  std::stable_sort(list.begin(), list.end(),
                   [](const name_count& a, const name_count& b) { return a.count > b.count; });
  if (others_ != 0) list.push_back({"others", others_});
  return list;
}

void event_facts::find(const event_view& event, finding_kind kind, std::string detail) {
  out_.findings.add(kind, event.header().file_offset, std::move(detail)).record =
      event.header().record_number;
}

std::string event_facts::datum(const event_view& event, std::string_view name) {
  for (const std::uint32_t field : event.shape().find_all(name)) {
    if (event.shape().fields[field].group == field_group::system) continue;  // "Channel" is both
    return std::string(event.text(static_cast<std::int32_t>(field), scratch_));
  }
  return {};
}

void event_facts::on_event(const event_view& event) {
  std::uint64_t id = 0;
  const bool has_id = event.number(system_member::event_id, id);
  name_ = event.text(system_member::provider_name, scratch_);
  const std::string provider = name_;
  if (has_id) {
    name_.insert(0, std::to_string(id) + ' ');
    events_.add(name_);
  }
  const std::uint64_t time = event.time();
  if (is_valid_filetime(time)) {
    if (first_time_ == 0 || time < first_time_) first_time_ = time;
    last_time_ = std::max(last_time_, time);
    const std::uint64_t day = time / qx::ticks_per_day;
    if (days_.contains(day) || days_.size() < limits::counted_names) ++days_[day];
  }
  const std::string_view user = event.text(system_member::user_id, scratch_);
  if (!user.empty()) users_.add(user);
  const std::string_view channel = event.text(system_member::channel, scratch_);
  if (!channel.empty()) channels_.add(channel);
  tell_computer(event);
  if (!has_id) return;
  tell_sign(event, id, provider);
  note_clock_change(event, id, provider);
}

// A name that was not seen before, other than the first one.
void event_facts::tell_computer(const event_view& event) {
  const std::string computer(event.text(system_member::computer, scratch_));
  if (computer.empty()) return;
  if (!hosts_.empty() && !hosts_.has(computer)) {
    find(event, finding_kind::computer_changed, "first event of " + computer);
  }
  hosts_.add(computer);
}

void event_facts::tell_sign(const event_view& event, std::uint64_t id, std::string_view provider) {
  for (const sign_row& sign : signs) {
    if (sign.id != id || !equal_nocase(sign.provider, provider)) continue;
    std::string detail = std::to_string(id) + ", " + utc_text(event.time()) + ": ";
    detail += sign.what;
    if (sign.kind == finding_kind::log_cleared) {
      if (clearings_.size() < limits::counted_names) {
        clearings_.push_back(event.header().record_number);
      }
      const std::string channel = id == 104 ? datum(event, "Channel") : std::string();
      if (!channel.empty()) detail += ", channel " + channel;
      const std::string user = datum(event, "SubjectUserName");
      if (!user.empty()) detail += ", by " + user;
    }
    find(event, sign.kind, std::move(detail));
    return;
  }
}

void event_facts::note_clock_change(const event_view& event, std::uint64_t id,
                                    std::string_view provider) {
  const bool audited = id == 4616 && provider == security;
  if (!audited && !(id == 1 && provider == kernel)) return;
  const clock_change change{filetime_of(event, audited ? "PreviousTime" : "OldTime"),
                            filetime_of(event, "NewTime"), event.header().record_number};
  if (change.after == 0 || change.after >= change.before) return;
  if (changes_.size() < limits::counted_names) changes_.push_back(change);
}

const event_facts::clock_change* event_facts::change_behind(const time_jump& jump) const {
  for (const clock_change& change : changes_) {
    if (distance(change.before, jump.before) <= change_slack ||
        distance(change.after, jump.record.time_written) <= change_slack) {
      return &change;
    }
  }
  return nullptr;
}

void event_facts::finish(const std::vector<time_jump>& jumps, std::uint64_t first_number) {
  for (const time_jump& jump : jumps) {
    const clock_change* change = change_behind(jump);
    std::string detail =
        "from " + utc_text(jump.before) + " to " + utc_text(jump.record.time_written);
    if (change) detail += ", explained by record " + std::to_string(change->record);
    finding& made = out_.findings.add(
        change ? finding_kind::time_backwards_explained : finding_kind::time_backwards,
        jump.record.offset, std::move(detail));
    made.chunk = jump.record.chunk;
    made.record = jump.record.number;
  }
  if (first_number > 1) {
    std::string detail = "the first record is " + std::to_string(first_number);
    if (std::find(clearings_.begin(), clearings_.end(), first_number) != clearings_.end()) {
      detail += ", which reports that the log was cleared";
    }
    out_.findings.add(finding_kind::begins_late, 0, std::move(detail)).record = first_number;
  }
  if (first_time_ != 0) {
    out_.facts.push_back({"first_event_time", utc_text(first_time_)});
    out_.facts.push_back({"last_event_time", utc_text(last_time_)});
  }
  out_.events = events_.sorted();
  out_.computers = hosts_.sorted();
  out_.users = users_.sorted();
  out_.channels = channels_.sorted();
  for (const auto& [day, count] : days_) {
    out_.days.push_back({utc_text(day * qx::ticks_per_day).substr(0, 10), count});
  }
}

}  // namespace zanvik
