#include "sigma/field_test.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <chrono>

namespace zanvik::sigma {
namespace {

// Reads an address of either version; IPv4 in its IPv6 form.
std::optional<std::array<unsigned char, 16>> address_of(std::string_view text, bool& is_v4) {
  std::array<char, INET6_ADDRSTRLEN + 1> copy{};
  std::array<unsigned char, 16> out{};
  if (text.size() >= copy.size()) return std::nullopt;
  std::copy(text.begin(), text.end(), copy.begin());
  if (inet_pton(AF_INET6, copy.data(), out.data()) == 1) {
    is_v4 = false;
    return out;
  }
  out = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
  if (inet_pton(AF_INET, copy.data(), out.data() + 12) != 1) return std::nullopt;
  is_v4 = true;
  return out;
}

bool compares(field_test::relation compare, long double value, long double limit) {
  switch (compare) {
    case field_test::relation::less:
      return value < limit;
    case field_test::relation::less_equal:
      return value <= limit;
    case field_test::relation::greater:
      return value > limit;
    case field_test::relation::greater_equal:
      return value >= limit;
    default:
      return value == limit;
  }
}

bool number_passes(const field_test& test, std::string_view text) {
  if (test.part != field_test::time_part::none) {
    const auto part = part_of_time(test.part, text);
    return part && compares(test.compare, *part, test.number);
  }
  const auto number = number_of(text);
  return number && compares(test.compare, *number, test.number);
}

bool text_within(const field_test& test, std::string_view text, std::string_view part) {
  if (test.open_start && test.open_end) return text.find(part) != std::string_view::npos;
  if (test.open_start) return text.ends_with(part);
  if (test.open_end) return text.starts_with(part);
  return text == part;
}

bool fields_agree(const field_test& test, const field_values& values, const field_values& other) {
  for (const field_value& a : values) {
    for (const field_value& b : other) {
      if (test.cased ? text_within(test, a.text, b.text) : text_within(test, a.folded, b.folded)) {
        return true;
      }
    }
  }
  return false;
}

// A number of exactly `digits` digits, which are removed from `text`.
std::optional<int> take_digits(std::string_view& text, std::size_t digits) {
  int value = 0;
  if (text.size() < digits) return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, value);
  if (error != std::errc() || end != text.data() + digits || value < 0) return std::nullopt;
  text.remove_prefix(digits);
  return value;
}

// The shortest text that reads back as the number.
std::string number_text(long double number) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number);
  return {text.data(), end.ptr};
}

std::optional<int> iso_week(std::chrono::year_month_day date) {
  using namespace std::chrono;
  // The week belongs to the year of its Thursday.
  const sys_days day = date;
  const sys_days thursday = day - (weekday(day) - Monday) + days(3);
  const sys_days first = sys_days(year_month_day(thursday).year() / January / 1);
  return static_cast<int>((thursday - first).count() / 7 + 1);
}

}  // namespace

std::optional<address_range> address_range::parse(std::string_view text) {
  const std::size_t slash = text.find('/');
  bool is_v4 = false;
  const auto address = address_of(text.substr(0, slash), is_v4);
  if (!address) return std::nullopt;
  const unsigned most = is_v4 ? 32 : 128;
  unsigned bits = most;
  if (slash != std::string_view::npos) {
    const std::string_view digits = text.substr(slash + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), bits);
    if (error != std::errc() || end != digits.data() + digits.size() || bits > most) {
      return std::nullopt;
    }
  }
  return address_range{*address, bits + 128 - most};
}

bool address_range::holds(std::string_view text) const {
  bool is_v4 = false;
  const auto other = address_of(text, is_v4);
  if (!other || !std::equal(address.begin(), address.begin() + bits / 8, other->begin())) {
    return false;
  }
  constexpr std::array<unsigned char, 12> mapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
  if (bits < 96 && std::equal(mapped.begin(), mapped.end(), other->begin())) return false;
  if (bits % 8 == 0) return true;
  return (address[bits / 8] ^ (*other)[bits / 8]) >> (8 - bits % 8) == 0;
}

std::optional<long double> number_of(std::string_view text) {
  const bool negative = text.starts_with('-');
  std::string_view digits = text.substr(negative ? 1 : 0);
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    std::uint64_t value = 0;
    digits.remove_prefix(2);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return negative ? -static_cast<long double>(value) : static_cast<long double>(value);
  }
  // from_chars would accept "inf" and a second sign.
  if (digits.empty() || digits[0] < '0' || digits[0] > '9') return std::nullopt;
  long double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return negative ? -value : value;
}

std::optional<int> part_of_time(field_test::time_part part, std::string_view text) {
  using namespace std::chrono;
  const auto y = take_digits(text, 4);
  if (!y || !text.starts_with('-')) return std::nullopt;
  text.remove_prefix(1);
  const auto m = take_digits(text, 2);
  if (!m || !text.starts_with('-')) return std::nullopt;
  text.remove_prefix(1);
  const auto d = take_digits(text, 2);
  if (!d) return std::nullopt;
  const year_month_day date(year(*y), month(static_cast<unsigned>(*m)),
                            day(static_cast<unsigned>(*d)));
  if (!date.ok()) return std::nullopt;
  switch (part) {
    case field_test::time_part::year:
      return *y;
    case field_test::time_part::month:
      return *m;
    case field_test::time_part::day:
      return *d;
    case field_test::time_part::week:
      return iso_week(date);
    default:
      break;
  }
  if (text.empty() || (text[0] != 'T' && text[0] != ' ')) return std::nullopt;
  text.remove_prefix(1);
  const auto hour = take_digits(text, 2);
  if (!hour || *hour > 23 || !text.starts_with(':')) return std::nullopt;
  if (part == field_test::time_part::hour) return hour;
  text.remove_prefix(1);
  const auto minute = take_digits(text, 2);
  return minute && *minute <= 59 ? minute : std::nullopt;
}

bool value_passes(const field_test& test, const field_value& value, test_scratch& scratch) {
  switch (test.what) {
    case field_test::kind::text:
      return test.pattern.matches(test.cased ? value.text : value.folded);
    case field_test::kind::regex: {
      const regex_answer answer = test.expression->search(value.text, scratch.matching);
      scratch.gave_up |= answer == regex_answer::gave_up;
      return answer == regex_answer::yes;
    }
    case field_test::kind::number:
      return number_passes(test, value.text);
    case field_test::kind::address:
      return test.range.holds(value.text);
    default:
      return false;
  }
}

bool field_passes(const field_test& test, const field_values& values, const field_values& other,
                  test_scratch& scratch) {
  switch (test.what) {
    case field_test::kind::exists:
      return values.empty() != test.expected;
    case field_test::kind::null:
      return std::all_of(values.begin(), values.end(),
                         [](const field_value& value) { return value.null; });
    case field_test::kind::field:
      return fields_agree(test, values, other);
    default:
      return std::any_of(values.begin(), values.end(), [&](const field_value& value) {
        return value_passes(test, value, scratch);
      });
  }
}

std::string field_test::key() const {
  std::string out = field + '\0' + std::to_string(static_cast<int>(what)) + (cased ? 'c' : '-');
  switch (what) {
    case kind::text:
      return out + pattern.key();
    case kind::regex: {
      const regex_flags flags = expression->flags();
      out += flags.any_case ? 'i' : '-';
      out += flags.multi_line ? 'm' : '-';
      return out + (flags.single_line ? 's' : '-') + expression->text();
    }
    case kind::number:
      out += std::to_string(static_cast<int>(compare)) + '/' +
             std::to_string(static_cast<int>(part)) + '/';
      return out + number_text(number);
    case kind::address:
      out.append(reinterpret_cast<const char*>(range.address.data()), range.address.size());
      return out + std::to_string(range.bits);
    case kind::exists:
      return out + (expected ? '+' : '-');
    case kind::field:
      return out + (open_start ? '<' : '-') + (open_end ? '>' : '-') + other;
    default:
      return out;
  }
}

}  // namespace zanvik::sigma
