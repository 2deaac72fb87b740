// Tables and timelines of selected records: the quick writer compared with the plain one.
#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/time_format.h"
#include "fuzz_target.h"
#include "options/output_options.h"
#include "output/timelines/timeline_writer.h"
#include "output/write_records.h"
#include "reference/plain_output.h"

namespace zanvik::fuzz {

// An output format that options can produce, chosen by the bits of `choice`.
inline output_format chosen_format(std::uint16_t choice) {
  static constexpr const char* flags[] = {
      "-csv",    "-csvl2t", "-bodyfile",     "-pair_datetime", "-enable_quoted_csv_fields",
      "-base16", "-csvgen", "-no_whitespace"};
  static constexpr const char* dates[] = {"",         "mm/dd/yyyy", "dd-mmm-yyy", "mmm dd,yyy",
                                          "yy/mm/dd", "xxxxxxxx",   "dd.mm.yyyy", "mm-mm-mmmm"};
  static constexpr const char* times[] = {"", "hh:mm:ss", "hh:mm:ss.xxxxxxx", "ss:hh:mm.xxxxx"};
  static constexpr const char* separators[] = {"", ";", "\t", " , "};
  argument_list words{"zanvik"};
  for (std::size_t i = 0; i < std::size(flags); ++i) {
    if (choice & (1u << i)) words.emplace_back(flags[i]);
  }
  const auto add = [&words](const char* name, const char* value) {
    if (*value != '\0') words.insert(words.end(), {name, value});
  };
  add("-dateformat", dates[(choice >> 8) & 7]);
  add("-timeformat", times[(choice >> 11) & 3]);
  add("-csv_separator", separators[(choice >> 13) & 3]);
  output_format format;
  format.pair_datetime = take_flag_option("-pair_datetime", words);
  format.base16 = false;
  take_form_options(words, format);
  take_text_options(words, format);
  (void)build_format_descriptor(format.descriptor, format.date_format, format.time_format,
                                format.pair_datetime);
  return format;
}

// Writes the records both ways, as a timeline if the format says so. `tables` is what the quick way
// knows from earlier logs.
inline void require_tables_agree(record_container& records, const output_format& format,
                                 const write_context& context, table_cache& tables) {
  const auto ordered = records.in_time_order();
  std::ostringstream quick;
  std::ostringstream plain;
  if (format.output_bodyfile || format.output_l2t) {
    bool quick_pending = true, plain_pending = true;
    write_timeline(quick, ordered, format, context, quick_pending);
    write_plain_timeline(plain, ordered, format, context, plain_pending);
  } else {
    tables.use_with(records);
    write_grouped(quick, ordered, format, context, tables);
    write_plain_tables(plain, ordered, format, context);
  }
  require_equal(quick.str(), plain.str(), "the quick and the plain way agree");
}

}  // namespace zanvik::fuzz
