// Finds the logs that paths lead to: files, folders to the bottom, disk images with all files in
// them, and "-" for standard input.
//
// In: paths as given, of any bytes. Out: each log, open and known by its signature, in the order of
// the paths; below a folder in byte order of names, in a disk image in the order of its volumes.
// Symbolic links below a folder are not followed.
// What cannot be read is reported and passed over; files below a folder that are no logs are passed
// over in silence. A stop signal ends the search.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "source/found_log.h"
#include "source/log_start.h"

namespace zanvik {

// Sets device and inode where standard input is a file.
void identify_standard_input(log_source& source);

// Which bytes are searched for chunks and records.
enum class carve_what : std::uint8_t {
  nothing,
  everything,  // of a file or stream, of the disk in an image
  free_space,  // of the volumes in an image
};

class log_finder {
 public:
  using log_callback = std::function<void(found_log&)>;
  using problem_callback = std::function<void(const std::string& path, const std::string& what)>;

  log_finder(log_callback on_log, problem_callback on_problem)
      : on_log_(std::move(on_log)), on_problem_(std::move(on_problem)) {}

  // What is searched for logs, instead of taking files for what they are.
  void carve(carve_what what) { carve_ = what; }

  void find(const std::string& path);

 private:
  void find_folder(const std::string& path, unsigned depth);
  void find_file(const std::string& path, bool named);
  bool find_in_image(const std::string& path, image_kind kind, const log_source& file);
  void find_stream();

  log_callback on_log_;
  problem_callback on_problem_;
  carve_what carve_ = carve_what::nothing;
};

}  // namespace zanvik
