// Which files the terms of `-filter` and `-filter_sig` and the file-time window let through.
//
// In go a path, the terms, and the window of the options; out comes a yes or no. A path that is
// not UTF-8 counts as empty and is never let through. Only a term with a signature opens the file,
// and reads no more than the bytes that the signature stands against; what cannot be opened or
// read does not match.
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

// Fills `info` for the file at `path`, which for a link is the file behind it. Returns false, with
// `info` unchanged, when there is none.
[[nodiscard]] bool get_file_info(const std::string& path, file_info& info);

// Returns whether `path` lies in the window of `options` and passes one of `filters`; no filters
// pass everything. `info` null leaves the window out; one that is not filled is filled when a bound
// is on. A time of 0 or before 1970 lies in no window. `undecided` tells of a file that is too
// short for a signature. The parts of terms behind `:` are not tested here.
[[nodiscard]] bool match_filters(const walk_options& options, bool& undecided,
                                 const std::string& path,
                                 const std::vector<file_filter_entry>& filters, file_info* info);

}  // namespace zanvik
