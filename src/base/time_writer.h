// Times as text for the path of each record: the results of time_format.h without an allocation,
// and without computing the same day again for each record. Tests compare the two.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/format_descriptor.h"
#include "base/time_value.h"

namespace zanvik {

// Prints as format_with_descriptor does. Make one per descriptor and keep it.
class cell_time_formatter {
 public:
  explicit cell_time_formatter(const format_descriptor& descriptor);

  // What format_with_descriptor returns for this time; the texts are in date() and time().
  bool format(std::uint64_t filetime);
  // Of the last format(); valid until the next one. Both are empty for an invalid time.
  std::string_view date() const { return {date_.data(), date_size_}; }
  std::string_view time() const { return {time_.data(), time_size_}; }

 private:
  void print_day(std::uint64_t day);

  format_descriptor descriptor_;
  unsigned digits_ = 0;                    // of the fraction
  bool result_ = true;                     // for a valid time
  std::uint64_t day_ = ~std::uint64_t{0};  // whose text is day_text_; no time has this value
  std::size_t day_size_ = 0;
  std::size_t date_size_ = 0;
  std::size_t time_size_ = 0;
  std::array<char, 32> date_{};
  std::array<char, 24> time_{};
};

// Maximum size of a FILETIME value.
inline constexpr std::size_t filetime_text_room = 32;

// Prints as format_filetime_value does, and remembers the last day.
class filetime_writer {
 public:
  // Writes "2012-03-01 12:34:56.123456700" at `out`, nothing for 0, one blank for an invalid time.
  // Returns its end.
  char* write(char* out, std::uint64_t filetime);

 private:
  std::uint64_t day_ = ~std::uint64_t{0};
  std::size_t date_size_ = 0;
  std::array<char, 16> date_{};  // with the blank after it
};

// The same for a single time.
char* write_filetime_fixed(char* out, std::uint64_t filetime);

}  // namespace zanvik
