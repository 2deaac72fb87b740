// The options that decide how results look: output form, separators, number base, date and time
// formats, path aliases. The option passes fill it, the writers read it.
#pragma once

#include <map>
#include <string>

#include "base/format_descriptor.h"
#include "base/time_formats.h"

namespace zanvik {

struct output_format : time_formats {
  std::string csv_separator = " | ";
  char separator_char = '|';        // replaced inside a field; 0 if there is none
  char separator_substitute = ';';  // by this
  bool no_whitespace = false;       // no column is padded to a width
  bool pad_fields = true;           // one blank before a time column
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
  bool row_newline = true;
  format_descriptor descriptor;
  std::map<std::string, std::string> alias_files;  // lower-cased true path -> shown path
  std::map<std::string, std::string> alias_paths;  // lower-cased true folder -> shown folder
};

}  // namespace zanvik
