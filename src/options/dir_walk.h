// Names of files one at a time, from standard input or from a walk below a folder.
//
// The walk is breadth first, in the order in which the system lists each folder. It holds the names
// of one folder and the folders still to be listed. What cannot be listed, or is gone when its turn
// comes, gives nothing and no message; a link is a file, whatever it points to, so no walk goes in
// circles. Names that are not UTF-8 are passed over.
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
  std::string path;  // whole; a folder's ends in `/`
  std::string name;  // its last part
  bool is_dir = false;
  std::int32_t depth = 0;
};

// The folders that `root` names, each with a `/` at its end: itself, or, for each part of it that
// is `*`, all folders in that place, whose own names are then taken as they are. Of a part that
// only holds a star, what stands before the star is the folder, and the rest of `root` is lost. A
// root without any `/` names no folder, and one that does not exist is still named.
std::vector<std::string> wildcard_folders(std::string_view root);

// Calls `use` for each entry of `folder`, which ends in `/` and stands `depth` folders down; the
// node is valid during the call. Folders come whatever the pattern is. A file comes when its name
// up to the last `.`, and what is behind it, are those of `pattern` in any case, where `*` is any.
void list_folder(const std::string& folder, std::int32_t depth, std::string_view pattern,
                 const std::function<void(const _DIR_NODE&)>& use);

class stdin_stream_ex : public uni::stdin_stream {
 public:
  // `options` gives the file-time window and must outlive the stream.
  explicit stdin_stream_ex(const walk_options& options, int descriptor = STDIN_FILENO)
      : uni::stdin_stream(descriptor), options_(options) {}

  // Makes `read_line` give the lines of standard input, whatever they hold.
  [[nodiscard]] bool start_stdin();
  // Makes it give the files in `root` and down to `max_depth` folders below it that `filters` and
  // the window let through. A file too short for a signature is let through as well: it is the
  // caller who decides on it.
  [[nodiscard]] bool start_walk(std::string_view root, std::int32_t max_depth,
                                const std::vector<file_filter_entry>& filters);

  // `strip` is for lines: the path of a file comes as it is.
  [[nodiscard]] bool read_line(std::string& out, bool strip) override;

 private:
  // Takes the `\\?\` off `path`, unless what follows is one of the system's global names. Returns
  // whether the walk takes the path, which for a folder is always.
  bool accept_path(std::string& path, bool is_folder) const;
  bool next_walk_file(std::string& out);
  void list_next_folder();

  const walk_options& options_;
  std::vector<file_filter_entry> filters_;
  std::deque<std::pair<std::string, std::int32_t>> pending_dirs_;  // with their depths
  std::string folder_;                                             // of the files that are pending
  std::string pending_files_;                                      // their names, a NUL behind each
  std::size_t next_file_ = 0;                                      // where the next one begins
  std::int32_t max_depth_ = 0;
  bool walking_ = false;
};

}  // namespace zanvik::qxportdir
