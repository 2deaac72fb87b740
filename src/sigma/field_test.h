// One test of a rule on one field of an event, and its plain evaluation.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sigma/regex.h"
#include "sigma/text_pattern.h"

namespace zanvik::sigma {

// A value of an event as rules see it. The views are valid as long as the event's buffers.
struct field_value {
  std::string_view text;
  std::string_view folded;  // the text without its case (fold_case.h)
  bool null = false;        // the field is there and has no value; its text is empty
};

// All values of one field of one event; empty if the event does not have the field.
using field_values = std::vector<field_value>;

// A network: the leading bits of an address. In IPv6, IPv4 is ::ffff:a.b.c.d, and is in no IPv6
// network wider than all of IPv4.
struct address_range {
  std::array<unsigned char, 16> address{};
  unsigned bits = 0;
  static std::optional<address_range> parse(std::string_view text);
  bool holds(std::string_view text) const;
};

struct field_test {
  enum class kind : unsigned char { text, regex, number, address, exists, null, field };
  enum class relation : unsigned char { equal, less, less_equal, greater, greater_equal };
  enum class time_part : unsigned char { none, minute, hour, day, week, month, year };

  std::string field;  // empty: any value of the event
  kind what = kind::text;
  bool cased = false;                         // text, field
  text_pattern pattern;                       // text; folded unless `cased`
  std::shared_ptr<const regex> expression;    // regex
  std::string literal;                        // regex: what stands in each folded text, or empty
  relation compare = relation::equal;         // number
  time_part part = time_part::none;           // number: of a date
  long double number = 0;                     // number
  address_range range;                        // address
  bool expected = true;                       // exists
  std::string other;                          // field: the name of the other one
  bool open_start = false, open_end = false;  // field: the other one's value may stand within

  // The same for equal tests only.
  std::string key() const;
};

// Memory of a regular expression search.
struct test_scratch {
  regex_scratch matching;
  bool gave_up = false;  // a limit was reached
};

// Whether one value passes; for every kind except exists, null and field.
bool value_passes(const field_test& test, const field_value& value, test_scratch& scratch);

// Whether the field passes. `other` are the values of the field that a test of kind field names.
bool field_passes(const field_test& test, const field_values& values, const field_values& other,
                  test_scratch& scratch);

// A number as rules and events write it: decimal, with a fraction or an exponent, or 0x and
// hexadecimal digits.
std::optional<long double> number_of(std::string_view text);

// The part of a date "2017-12-26 13:10:29…" or "2017-12-26T13:10:29…"; weeks as ISO 8601 counts
// them.
std::optional<int> part_of_time(field_test::time_part part, std::string_view text);

}  // namespace zanvik::sigma
