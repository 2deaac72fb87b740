#include "options/output_options.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/console.h"
#include "base/path_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "options/csv_separator.h"

namespace zanvik {
namespace {

// Makes `form` the only output form.
void select_form(output_format& out, bool output_format::*form) {
  out.output_csv = out.output_csvgen = out.output_l2t = false;
  out.output_bodyfile = out.output_xml = out.output_multiline = false;
  out.*form = true;
}

using alias_map = std::map<std::string, std::string>;
using pair_rule = void (*)(std::string& true_path, std::string& alias);

void plain_pair(std::string& true_path, std::string&) { to_lower_in_place(true_path); }

// A pair of folders: neither ends in a slash, and a missing true path is "*".
void folder_pair(std::string& true_path, std::string& alias) {
  if (true_path.ends_with('/')) true_path.pop_back();
  if (alias.ends_with('/')) alias.pop_back();
  remove_char(true_path, '"');
  to_lower_in_place(true_path);
  if (true_path.empty()) true_path = "*";
}

bool take_alias_list(std::string_view name, argument_list& argv_list, pair_rule rule,
                     alias_map& out) {
  std::string value;
  if (!take_value_option(name, value, argv_list)) return true;
  std::vector<std::string> items;
  split_on_char(value, '|', items, true, false, false);
  if (items.size() % 2 != 0) {
    prob_message("%s, aborting\n", "imbalanced alias to true pathfiles");
    return false;
  }
  for (std::size_t i = 0; i < items.size(); i += 2) {
    std::string true_path = expand_env_references(items[i], true);
    std::string alias = expand_env_references(items[i + 1], true);
    rule(true_path, alias);
    out.emplace(std::move(true_path), std::move(alias));
  }
  return true;
}

void take_format(std::string_view name, argument_list& argv_list, bool (*fits)(std::string_view),
                 std::string& out) {
  std::string value;
  if (!take_value_option(name, value, argv_list)) return;
  if (fits(value)) {
    out = to_lower(value);
  } else {
    prob_message("invalid %s, using default format\n", value.c_str());
  }
}

// Only the length of a date format is checked; one without its parts prints as it can.
bool is_date_format(std::string_view text) { return text.size() == 8 || text.size() == 10; }

bool is_time_format(std::string_view text) {
  const std::size_t size = text.size();
  return (size == 8 || (size >= 12 && size <= 18)) && text.find(':') != std::string_view::npos;
}

}  // namespace

void take_form_options(argument_list& argv_list, output_format& out) {
  if (take_flag_option("-csv", argv_list)) {
    select_form(out, &output_format::output_csv);
    set_csv_separator(out, ",", false);
    out.no_whitespace = !out.pair_datetime;
  }
  if (take_flag_option("-csvgen", argv_list)) {
    select_form(out, &output_format::output_csvgen);
    set_csv_separator(out, ",", false);
    out.no_whitespace = true;
  }
  if (take_flag_option("-csvl2t", argv_list)) {
    select_form(out, &output_format::output_l2t);
    out.row_form = true;
    set_csv_separator(out, ",", false);
  }
  if (take_flag_option("-bodyfile", argv_list)) {
    select_form(out, &output_format::output_bodyfile);
    out.row_form = true;
    set_csv_separator(out, "|", false);
  }
  if (take_flag_option("-xml", argv_list)) {
    select_form(out, &output_format::output_xml);
    out.row_form = false;
    set_csv_separator(out, "", false);
  }
  if (take_flag_option("-multiline", argv_list)) {
    select_form(out, &output_format::output_multiline);
    out.row_form = true;
    out.csv_separator.clear();
    out.separator_char = out.separator_substitute = 0;
  }
}

bool take_alias_options(argument_list& argv_list, output_format& out) {
  return take_alias_list("-alias", argv_list, plain_pair, out.alias_files) &&
         take_alias_list("-aliaspath", argv_list, folder_pair, out.alias_paths);
}

void take_text_options(argument_list& argv_list, output_format& out) {
  if (take_flag_option("-base10", argv_list)) out.base16 = false;
  if (take_flag_option("-base16", argv_list)) out.base16 = true;
  std::string value;
  if (take_value_option("-csv_separator", value, argv_list)) set_csv_separator(out, value, false);
  if (take_flag_option("-enable_quoted_csv_fields", argv_list)) {
    out.quoted_fields = true;
    if (out.csv_separator.find('\t') == std::string::npos) trim_blanks(out.csv_separator);
    out.pad_fields = false;
    out.separator_char = 0;
  }
  if (take_flag_option("-no_whitespace", argv_list)) {
    out.no_whitespace = true;
    out.pad_fields = false;
    remove_char(out.csv_separator, ' ');
  }
  take_format("-dateformat", argv_list, is_date_format, out.date_format);
  take_format("-timeformat", argv_list, is_time_format, out.time_format);
}

}  // namespace zanvik
