// Finds the logs that paths lead to: files, folders to the bottom, and "-" for standard input.
//
// In: paths as given, of any bytes. Out: each log, open and known by its signature, in the order of
// the paths; below a folder in byte order of names. Symbolic links below a folder are not followed.
// What cannot be read is reported and passed over; files below a folder that are no logs are passed
// over in silence.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "source/found_log.h"

namespace zanvik {

// Sets device and inode where standard input is a file.
void identify_standard_input(log_source& source);

class log_finder {
 public:
  using log_callback = std::function<void(found_log&)>;
  using problem_callback = std::function<void(const std::string& path, const std::string& what)>;

  log_finder(log_callback on_log, problem_callback on_problem)
      : on_log_(std::move(on_log)), on_problem_(std::move(on_problem)) {}

  // Files are not asked what they are; each of them is bytes to be searched for logs.
  void carve() { carve_ = true; }

  void find(const std::string& path);

 private:
  void find_folder(const std::string& path, unsigned depth);
  void find_file(const std::string& path, bool named);
  void find_stream();

  log_callback on_log_;
  problem_callback on_problem_;
  bool carve_ = false;
};

}  // namespace zanvik
