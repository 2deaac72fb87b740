// A date format and a time format in the digested form by which times are written.
#pragma once

#include <cstdint>

namespace zanvik {

// What `build_format_descriptor` (time_format.h) makes of the two.
struct format_descriptor {
  enum flag : std::uint8_t {
    month_name = 0x01,    // "mmm"
    month_digits = 0x02,  // "mm"
    year_four = 0x04,     // "yyyy"
    year_two = 0x08,      // "yy"
    comma = 0x10,
    day_month_year = 0x20,
    month_day_year = 0x40,
    year_month_day = 0x80,
  };
  char separator = 0;           // '/', '-', a blank, or 0 if there is none
  std::uint8_t flags = 0;       // of `flag`
  std::uint8_t time_flags = 0;  // bit 0 pair_datetime, bits 1 to 4 the number of fraction digits
  std::uint8_t reserved = 0;
  std::uint16_t first_year = 1900;  // from here on: parts of the digest that nothing reads
  std::uint16_t last_year = 2600;
  std::uint32_t last_value = 0;

  unsigned fraction_digits() const { return (time_flags >> 1) & 0x0f; }
};
static_assert(sizeof(format_descriptor) == 12);

}  // namespace zanvik
