#include "options/argument_list.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace zanvik {
namespace {

// The first element equal to `name`, or the end.
template <typename List>
auto find_option(std::string_view name, List& argv_list) {
  return std::find_if(argv_list.begin(), argv_list.end(),
                      [name](const std::string& word) { return option_equal(word, name); });
}

}  // namespace

bool option_equal(std::string_view a, std::string_view b) { return equal_nocase(a, b); }

bool take_value_option(std::string_view name, std::string& out_value, argument_list& argv_list) {
  const auto found = find_option(name, argv_list);
  if (found == argv_list.end() || std::next(found) == argv_list.end()) return false;
  out_value = std::move(*std::next(found));
  argv_list.erase(found, found + 2);
  return true;
}

bool take_flag_option(std::string_view name, argument_list& argv_list, bool keep) {
  const auto found = find_option(name, argv_list);
  if (found == argv_list.end()) return false;
  if (!keep) argv_list.erase(found);
  return true;
}

bool has_option_from(std::string_view name, const argument_list& argv_list,
                     std::size_t first_index) {
  return std::any_of(
      argv_list.begin() + static_cast<std::ptrdiff_t>(std::min(first_index, argv_list.size())),
      argv_list.end(), [name](const std::string& word) { return option_equal(word, name); });
}

std::string command_line_text(const argument_list& argv_list, char quote) {
  std::string text;
  for (const std::string& word : argv_list) {
    if (&word != &argv_list.front()) text += ' ';
    const bool wrapped = word.find(' ') != std::string::npos;
    if (wrapped) text += quote;
    text += word;
    if (wrapped) text += quote;
  }
  return text;
}

}  // namespace zanvik
