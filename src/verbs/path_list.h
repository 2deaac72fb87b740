// A list of paths in a file: a line each, or with a NUL behind each, which the first of the two
// that stands in the file decides. Paths may have any other bytes; empty ones are passed over.
#pragma once

#include <string>
#include <vector>

namespace zanvik {

// Appends the paths that the file lists, "-" for standard input. A path "-" in it is a file of that
// name. Returns why the list cannot be read, or nothing.
[[nodiscard]] std::string read_path_list(const std::string& file, std::vector<std::string>& paths);

}  // namespace zanvik
