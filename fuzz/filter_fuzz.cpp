// The terms of the file filters, the window of file times, and other lists in options. Lines of the
// input: a list of terms, a path, a time.
#include "base/file_filter.h"
#include "base/path_text.h"
#include "base/text_split.h"
#include "fuzz_target.h"
#include "options/file_match.h"
#include "options/walk_options.h"

namespace zanvik::fuzz {
namespace {

void require_lists_whole(std::string_view text) {
  std::vector<std::string> items;
  split_on_char(text, '|', items, false, true, false);
  std::string joined;
  for (std::size_t i = 0; i < items.size(); ++i) joined += (i == 0 ? "" : "|") + items[i];
  require_equal(joined, text, "the pieces make the whole");
  (void)split_on_first_of(text, items, true, false, "|,;");
  (void)split_on_blanks(text, 5, items, true);
  std::vector<std::int64_t> numbers;
  (void)parse_number_list(text, numbers, ',');
}

}  // namespace

ZANVIK_FUZZ_TARGET(filter) {
  const exact_bytes exact(bytes);
  input in(exact.span());
  const std::string_view terms = in.take_line();
  const std::string path(in.take_line());
  const std::string time(in.take_line());
  require_lists_whole(terms);
  std::vector<file_filter_entry> filters;
  parse_filter_list(terms, filters);
  require(!filters.empty(), "a list of terms has one at least");
  for (const file_filter_entry& entry : filters) {
    require((entry.name + entry.stream).find('*') == std::string::npos || entry.match_all ||
                entry.stream == "*",
            "no star stays in a name");
  }
  walk_options options;
  bool undecided = false;
  (void)match_filters(options, undecided, path, filters, nullptr);
  // A signature opens the file, so it must be a harmless one.
  parse_signature_filter(terms, filters);
  (void)match_filters(options, undecided, "/proc/self/comm", filters, nullptr);
  argument_list words{"zanvik", "-cmd_start_time", time, "-cmd_stop_time", path};
  (void)take_file_time_options(words, options);
  file_info file{true, 1705305600};
  (void)match_filters(options, undecided, path, {}, &file);
  (void)expand_env_references(terms, true);
  std::string folder, name, extension;
  (void)split_path_parts(path, folder, name, extension);
}

}  // namespace zanvik::fuzz
