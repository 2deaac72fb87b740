// Logs and free space of a disk image, by The Sleuth Kit. The only file that knows that library.
//
// In: an image. Out: the logs among the files of its file systems, the living ones and those that
// are deleted and still have their data, and bytes of them; or the parts of the image that belong
// to no file. Nothing is written anywhere. The library's parsers read what an image tells them, so
// this runs in a process of its own, under limits (main.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "source/image_protocol.h"
#include "source/log_start.h"

namespace zanvik {

class image_files {
 public:
  struct item : image_entry {
    std::string path;
    std::size_t system = 0;     // number of its file system
    std::uint64_t address = 0;  // of the file in it
    std::vector<image_extent> extents;
  };

  image_files();
  ~image_files();

  // Called now and then while there is progress.
  std::function<void()> on_progress = [] {};

  void open(const std::string& path, image_kind kind, image_use use);
  const std::vector<item>& items() const { return items_; }
  // Bytes of a log, or of the image; -1 when they cannot be read.
  std::int64_t read(const item& from, std::span<std::byte> buffer, std::uint64_t offset);

 private:
  struct library;

  void add_problem(const std::string& path, const std::string& what);
  void open_volumes(image_use use);
  bool open_system(const std::string& name, std::uint64_t offset, image_use use);
  void open_shadows(const std::string& name, std::uint64_t offset, std::uint64_t size);
  void find_logs(std::size_t system, const std::string& name);
  void find_free_space(std::size_t system, const std::string& name);

  std::unique_ptr<library> library_;
  std::vector<item> items_;
};

}  // namespace zanvik
