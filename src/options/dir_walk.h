// Names of files one at a time, from standard input or from a folder walk.
//
// The walk is breadth first, in the order in which the system lists each folder. It keeps the names
// of one folder and the folders still to be listed. A folder that cannot be listed, or that is gone
// when its turn comes, gives nothing and no message. A link is a file, whatever it points to, so
// the walk cannot go in circles. Names that are not UTF-8 are skipped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/file_filter.h"
#include "base/stdin_stream.h"
#include "options/walk_options.h"

namespace zanvik::qxportdir {

// An entry of a folder.
struct _DIR_NODE {
  std::string path;  // whole; the path of a folder ends in `/`
  std::string name;  // its last part
  bool is_dir = false;
  std::int32_t depth = 0;
};

// The folders that `root` names, each with a `/` at its end: itself, or, for each part of it that
// is `*`, all folders in that place, whose own names are then literal. If a part only contains a
// star, the text before the star is the folder, and the rest of `root` is lost. A root without any
// `/` names no folder, and one that does not exist is still named.
std::vector<std::string> wildcard_folders(std::string_view root);

// Calls `use` for each entry of `folder`, which ends in `/` and is at depth `depth`; the node is
// valid during the call. Folders match any pattern. A file matches if its name up to the last `.`,
// and the rest, equal those of `pattern` in any case, where `*` is any.
void list_folder(const std::string& folder, std::int32_t depth, std::string_view pattern,
                 const std::function<void(const _DIR_NODE&)>& use);

class stdin_stream_ex : public uni::stdin_stream {
 public:
  // `options` has the file-time window and must outlive the stream.
  explicit stdin_stream_ex(const walk_options& options, int descriptor = STDIN_FILENO)
      : uni::stdin_stream(descriptor), options_(options) {}

  // Makes `read_line` return the lines of standard input, whatever they contain.
  [[nodiscard]] bool start_stdin();
  // Makes it return the files in `root` and up to `max_depth` folders below it that pass `filters`
  // and the window. A file too short for a signature passes too: the caller decides about it.
  [[nodiscard]] bool start_walk(std::string_view root, std::int32_t max_depth,
                                const std::vector<file_filter_entry>& filters);

  // `strip` is for lines: the path of a file is never changed.
  [[nodiscard]] bool read_line(std::string& out, bool strip) override;

 private:
  // Removes the `\\?\` from `path`, unless one of the system's global names follows. Returns
  // whether the walk accepts the path, which is always true for a folder.
  bool accept_path(std::string& path, bool is_folder) const;
  bool next_walk_file(std::string& out);
  void list_next_folder();

  const walk_options& options_;
  std::vector<file_filter_entry> filters_;
  std::deque<std::pair<std::string, std::int32_t>> pending_dirs_;  // with their depths
  std::string folder_;                                             // of the files that are pending
  std::string pending_files_;                                      // their names, a NUL after each
  std::size_t next_file_ = 0;                                      // where the next one begins
  std::int32_t max_depth_ = 0;
  bool walking_ = false;
};

}  // namespace zanvik::qxportdir
