// The part of the options that says how results look: output form, separators, number base, date
// and time formats, path aliases. The option passes fill it; the writers read it, and change
// `csv_separator` (blanks leave it when `no_whitespace` is on) and `header_pending`.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace zanvik {

// Digest of `date_format` and `time_format`, made once by the option pass.
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
  char separator = 0;           // '/', '-', a blank, or 0 when there is none
  std::uint8_t flags = 0;       // of `flag`
  std::uint8_t time_flags = 0;  // bit 0 pair_datetime, bits 1 to 4 the count of fraction digits
  std::uint8_t reserved = 0;
  std::uint16_t first_year = 1900;  // this and what follows: a part of the digest, read by nobody
  std::uint16_t last_year = 2600;
  std::uint32_t last_value = 0;

  unsigned fraction_digits() const { return (time_flags >> 1) & 0x0f; }
};
static_assert(sizeof(format_descriptor) == 12);

struct output_format {
  std::string csv_separator = " | ";
  char separator_char = '|';        // replaced inside a field; 0 when there is none
  char separator_substitute = ';';  // by this
  bool no_whitespace = false;       // no column is padded to a width
  bool pad_fields = true;           // one blank stands before a time column
  bool base16 = true;
  bool quoted_fields = false;
  bool output_xml = false;
  bool output_csv = true;
  bool output_l2t = false;
  bool output_csvgen = false;
  bool output_bodyfile = false;
  bool output_multiline = false;
  bool pair_datetime = false;
  bool row_form = true;
  bool header_pending = true;
  bool row_newline = true;
  std::string date_format = "yyyy-mm-dd";
  std::string time_format = "hh:mm:ss.xxx";
  format_descriptor descriptor;
  std::map<std::string, std::string> alias_files;  // lower-cased true path -> what is shown
  std::map<std::string, std::string> alias_paths;  // lower-cased true folder -> what is shown
  std::string tool_tag = "EVT";                    // source label of timeline rows
};

}  // namespace zanvik
