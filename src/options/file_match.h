// Which files pass the terms of `-filter` and `-filter_sig` and the file-time window.
//
// In: a path, the terms, and the window of the options. Out: yes or no. A path that is not UTF-8
// counts as empty and never passes. Only a term with a signature opens the file, and reads only the
// bytes that the signature is compared with; a file that cannot be opened or read does not match.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/file_filter.h"
#include "options/walk_options.h"

namespace zanvik {

// The times of a file as the window tests them.
struct file_info {
  bool filled = false;
  std::int64_t modified = 0;  // Unix seconds
};

// Fills `info` for the file at `path`, or for the target of a link. Returns false, with `info`
// unchanged, if there is none.
[[nodiscard]] bool get_file_info(const std::string& path, file_info& info);

// Returns whether `path` is inside the window of `options` and passes one of `filters`; without
// filters everything passes. A null `info` skips the window; an empty one is filled if a bound is
// set. A time of 0 or before 1970 is outside every window. `undecided` is set for a file that is
// too short for a signature. The parts of terms after `:` are not tested here.
[[nodiscard]] bool match_filters(const walk_options& options, bool& undecided,
                                 const std::string& path,
                                 const std::vector<file_filter_entry>& filters, file_info* info);

}  // namespace zanvik
