#include "select/event_conditions.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "base/fold_case.h"
#include "base/text.h"
#include "base/time_value.h"

namespace zanvik {
namespace {

bool is_ascii(std::string_view text) {
  unsigned any = 0;
  for (const char c : text) any |= static_cast<unsigned char>(c);
  return any < 0x80;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

bool read_number(std::string_view text, unsigned most, unsigned& out) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), out);
  return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size() &&
         out <= most;
}

// Calls `use` for each part between commas; returns false as soon as that does.
template <typename F>
bool for_each_part(std::string_view text, F&& use) {
  for (;;) {
    const std::size_t comma = text.find(',');
    if (!use(text.substr(0, comma))) return false;
    if (comma == std::string_view::npos) return true;
    text.remove_prefix(comma + 1);
  }
}

struct named_level {
  std::string_view name;
  unsigned level;
};
constexpr unsigned information = 4;
constexpr named_level level_names[] = {{"critical", 1},       {"error", 2},
                                       {"warning", 3},        {"information", information},
                                       {"info", information}, {"verbose", 5}};

// Removes a number of `digits` digits from the front.
class time_parts {
 public:
  explicit time_parts(std::string_view text) : rest_(text) {}

  bool take(std::size_t digits, unsigned least, unsigned most, unsigned& out) {
    if (rest_.size() < digits) return false;
    const auto part = rest_.substr(0, digits);
    if (!std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; }) ||
        !read_number(part, most, out) || out < least) {
      return false;
    }
    rest_.remove_prefix(digits);
    return true;
  }
  bool skip(std::string_view any_of) {
    if (rest_.empty() || any_of.find(rest_.front()) == std::string_view::npos) return false;
    rest_.remove_prefix(1);
    return true;
  }
  bool starts_offset() const {
    return !rest_.empty() && std::string_view("Zz+-").find(rest_.front()) != std::string_view::npos;
  }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// The midnight that begins a date, as a FILETIME; nothing when there is no such date.
std::optional<std::int64_t> midnight_of(unsigned year, unsigned month, unsigned day) {
  qx::_windows_systemtime date{};
  date.year = static_cast<std::uint16_t>(year);
  date.month = static_cast<std::uint16_t>(month);
  date.day = static_cast<std::uint16_t>(day);
  const std::uint64_t filetime = system_to_filetime(date);
  // The 31st of a month that has 30 days is the first of the next one.
  if (system_from_filetime(filetime).day != day) return std::nullopt;
  return static_cast<std::int64_t>(filetime);
}

constexpr std::int64_t second = qx::ticks_per_second;
constexpr std::int64_t minute = 60 * second;

// The part after the date: ticks since midnight, and ticks that the last given unit lasts.
bool read_time_of_day(time_parts& parts, std::int64_t& ticks, std::int64_t& unit) {
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  if (!parts.take(2, 0, 23, hours) || !parts.skip(":") || !parts.take(2, 0, 59, minutes)) {
    return false;
  }
  unit = minute;
  ticks = (60 * hours + minutes) * minute;
  if (!parts.skip(":")) return true;
  if (!parts.take(2, 0, 59, seconds)) return false;
  unit = second;
  ticks += seconds * second;
  if (!parts.skip(".,")) return true;
  unsigned digit = 0;
  bool any = false;
  for (; parts.take(1, 0, 9, digit); any = true) {
    unit /= 10;
    ticks += digit * unit;
  }
  unit = std::max<std::int64_t>(unit, 1);
  return any;
}

bool read_offset(time_parts& parts, std::int64_t& ticks) {
  if (parts.rest().empty() || parts.skip("Zz")) return true;
  const bool west = parts.rest().front() == '-';
  unsigned hours = 0;
  unsigned minutes = 0;
  if (!parts.skip("+-") || !parts.take(2, 0, 23, hours)) return false;
  if (!parts.rest().empty()) {
    parts.skip(":");
    if (!parts.take(2, 0, 59, minutes)) return false;
  }
  const std::int64_t offset = (60 * hours + minutes) * minute;
  ticks += west ? offset : -offset;
  return true;
}

}  // namespace

bool matches_pattern(std::string_view text, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t in_pattern = 0;
  std::size_t star = std::string_view::npos;
  std::size_t star_at = 0;
  while (at < text.size()) {
    if (in_pattern < pattern.size() && pattern[in_pattern] == '*') {
      star = in_pattern++;
      star_at = at;
    } else if (in_pattern < pattern.size() &&
               (pattern[in_pattern] == '?' || lower(pattern[in_pattern]) == lower(text[at]))) {
      // A `?` takes a whole character.
      const bool any = pattern[in_pattern++] == '?';
      ++at;
      while (any && at < text.size() && (text[at] & 0xc0) == 0x80) ++at;
    } else if (star != std::string_view::npos) {
      in_pattern = star + 1;
      at = ++star_at;
    } else {
      return false;
    }
  }
  while (in_pattern < pattern.size() && pattern[in_pattern] == '*') ++in_pattern;
  return in_pattern == pattern.size();
}

bool event_conditions::any() const {
  return event_ids || !channels.empty() || !providers.empty() || !computers.empty() ||
         !users.empty() || from != 0 || to != ~std::uint64_t{0} || !where.empty() ||
         !contains.empty() || levels;
}

bool read_event_ids(std::string_view text, event_conditions& out) {
  constexpr unsigned most = 65535;
  event_id_lists lists = out.event_id_lists_given;
  const bool good = for_each_part(text, [&](std::string_view part) {
    const bool negated = part.starts_with('!');
    if (negated) part.remove_prefix(1);
    const std::size_t dash = part.find('-');
    unsigned first = 0;
    unsigned last = 0;
    if (!read_number(part.substr(0, dash), most, first)) return false;
    last = first;
    if (dash != std::string_view::npos && !read_number(part.substr(dash + 1), most, last)) {
      return false;
    }
    if (last < first) return false;
    for (unsigned id = first; id <= last; ++id) {
      (negated ? lists.left_out : lists.taken).set(id);
    }
    lists.any_taken = lists.any_taken || !negated;
    return true;
  });
  if (!good) return false;
  out.event_id_lists_given = lists;
  out.event_ids = (lists.any_taken ? lists.taken : ~std::bitset<65536>()) & ~lists.left_out;
  return true;
}

bool read_levels(std::string_view text, event_conditions& out) {
  std::bitset<256> levels = out.levels.value_or(std::bitset<256>());
  const bool good = for_each_part(text, [&](std::string_view part) {
    unsigned level = 0;
    for (const named_level& known : level_names) {
      if (equal_nocase(known.name, part)) level = known.level;
    }
    if (level == information) levels.set(0);  // as Windows shows it
    if (level == 0 && !read_number(part, 255, level)) return false;
    levels.set(level);
    return true;
  });
  if (good) out.levels = levels;
  return good;
}

bool read_where(std::string_view text, event_conditions& out) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) return false;
  where_condition condition;
  condition.negated = equals != 0 && text[equals - 1] == '!';
  condition.name = text.substr(0, equals - (condition.negated ? 1 : 0));
  condition.pattern = text.substr(equals + 1);
  if (condition.name.empty()) return false;
  out.where.push_back(std::move(condition));
  return true;
}

std::optional<std::uint64_t> read_time(std::string_view text, bool last_tick) {
  time_parts parts(text);
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  if (!parts.take(4, 1601, 9999, year) || !parts.skip("-") || !parts.take(2, 1, 12, month) ||
      !parts.skip("-") || !parts.take(2, 1, 31, day)) {
    return std::nullopt;
  }
  std::int64_t unit = qx::ticks_per_day;
  std::int64_t of_day = 0;
  const bool is_day = parts.rest().empty() || parts.starts_offset();
  if (!is_day && (!parts.skip("Tt ") || !read_time_of_day(parts, of_day, unit))) {
    return std::nullopt;
  }
  const auto midnight = midnight_of(year, month, day);
  if (!midnight) return std::nullopt;
  std::int64_t ticks = *midnight + of_day;
  if (!read_offset(parts, ticks) || !parts.rest().empty()) return std::nullopt;
  if (last_tick) ticks += unit - 1;
  return static_cast<std::uint64_t>(std::max<std::int64_t>(ticks, 0));
}

event_filter::event_filter(const event_conditions& conditions) : conditions_(conditions) {
  for (auto* texts : {&conditions_.channels, &conditions_.providers, &conditions_.computers,
                      &conditions_.users, &conditions_.contains}) {
    for (std::string& text : *texts) text = folded(text);
  }
  for (where_condition& condition : conditions_.where) {
    condition.pattern = folded(condition.pattern);
  }
}

std::string_view event_filter::comparable(std::string_view text) {
  if (is_ascii(text)) return text;
  folded_.clear();
  append_folded(folded_, text);
  return folded_;
}

const event_filter::known_shape& event_filter::fields_of(const event_shape& shape) {
  if (shape.index >= known_.size()) known_.resize(shape.index + 1);
  known_shape& known = known_[shape.index];
  if (known.id != shape.id) {
    known = {shape.id, {}};
    for (const where_condition& condition : conditions_.where) {
      known.where.push_back(shape.find_all(condition.name));
    }
  }
  return known;
}

bool event_filter::member_matches(const event_view& event, system_member member,
                                  const std::vector<std::string>& patterns) {
  if (patterns.empty()) return true;
  const std::string_view text = comparable(event.text(member, scratch_));
  return std::any_of(patterns.begin(), patterns.end(),
                     [text](const std::string& pattern) { return matches_pattern(text, pattern); });
}

bool event_filter::text_matches(const event_view& event, std::uint32_t field,
                                std::string_view pattern) {
  const event_value value = event.value(field);
  if (!value.is_array()) {
    return matches_pattern(comparable(event.text(static_cast<std::int32_t>(field), scratch_)),
                           pattern);
  }
  event_value rest = value;
  event_value item;
  while (next_item(rest, item)) {
    scratch_.clear();
    append_text(scratch_, item);
    if (matches_pattern(comparable(scratch_), pattern)) return true;
  }
  return false;
}

// An event has a value if one of the named fields has it; without such a field it has none.
bool event_filter::where_holds(const event_view& event, const known_shape& known) {
  for (std::size_t i = 0; i < conditions_.where.size(); ++i) {
    const where_condition& condition = conditions_.where[i];
    const auto& fields = known.where[i];
    const bool found = std::any_of(fields.begin(), fields.end(), [&](std::uint32_t field) {
      return text_matches(event, field, condition.pattern);
    });
    if (found == condition.negated) return false;
  }
  return true;
}

// In any field: a SID, a name, or the name after a domain and `\`.
bool event_filter::has_user(const event_view& event) {
  const auto is_user = [this](std::string_view field) {
    const std::string_view text = comparable(field);
    const std::size_t slash = text.rfind('\\');
    const auto name = slash == std::string_view::npos ? text : text.substr(slash + 1);
    return std::any_of(conditions_.users.begin(), conditions_.users.end(),
                       [&](const std::string& user) {
                         return matches_pattern(text, user) || matches_pattern(name, user);
                       });
  };
  for (std::size_t i = 0; i < event.shape().fields.size(); ++i) {
    event_value rest = event.value(static_cast<std::uint32_t>(i));
    event_value item;
    if (!rest.is_array()) {
      const std::string_view text = event.text(static_cast<std::int32_t>(i), scratch_);
      if (!text.empty() && is_user(text)) return true;
      continue;
    }
    while (next_item(rest, item)) {
      scratch_.clear();
      append_text(scratch_, item);
      if (!scratch_.empty() && is_user(scratch_)) return true;
    }
  }
  return false;
}

bool event_filter::contains_all(const event_view& event) {
  return std::all_of(
      conditions_.contains.begin(), conditions_.contains.end(), [&](const std::string& part) {
        for (std::size_t i = 0; i < event.shape().fields.size(); ++i) {
          if (contains_nocase(comparable(event.text(static_cast<std::int32_t>(i), scratch_)),
                              part)) {
            return true;
          }
        }
        return false;
      });
}

bool event_filter::takes(const event_view& event) {
  std::uint64_t number = 0;
  if (conditions_.event_ids && !(event.number(system_member::event_id, number) && number < 65536 &&
                                 conditions_.event_ids->test(number))) {
    return false;
  }
  if (conditions_.from != 0 || conditions_.to != ~std::uint64_t{0}) {
    const std::uint64_t time = event.time();
    if (time < conditions_.from || time > conditions_.to) return false;
  }
  if (conditions_.levels && !(event.number(system_member::level, number) && number < 256 &&
                              conditions_.levels->test(number))) {
    return false;
  }
  if (!member_matches(event, system_member::channel, conditions_.channels) ||
      !member_matches(event, system_member::provider_name, conditions_.providers) ||
      !member_matches(event, system_member::computer, conditions_.computers)) {
    return false;
  }
  if (!conditions_.where.empty() && !where_holds(event, fields_of(event.shape()))) return false;
  if (!conditions_.users.empty() && !has_user(event)) return false;
  return conditions_.contains.empty() || contains_all(event);
}

}  // namespace zanvik
