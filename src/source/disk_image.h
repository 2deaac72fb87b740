// A disk image, read by a process of its own (image_protocol.h).
//
// In: the path of an image whose kind is known. Out: what was found in it, and bytes of that. The
// image is opened for reading only. Whatever goes wrong with it ends in a message.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "source/image_protocol.h"
#include "source/log_start.h"

namespace zanvik {

class disk_image {
 public:
  disk_image() = default;
  disk_image(const disk_image&) = delete;
  disk_image& operator=(const disk_image&) = delete;
  ~disk_image();

  struct found_item : image_entry {
    std::string path;     // in the image, as "p2:/Windows/System32/…"
    std::string problem;  // why it could not be read
  };

  // False, with `problem` set, when there is no reader.
  [[nodiscard]] bool open(const std::string& path, image_kind kind, image_use use,
                          std::string& problem);
  // Item number `number`, from 0; nothing behind the last one, or when the reader stopped.
  std::optional<found_item> at(std::uint32_t number);
  // Like pread.
  ssize_t read(std::uint32_t item, std::span<std::byte> buffer, std::uint64_t offset);
  std::vector<image_extent> extents(std::uint32_t item);
  // Why the reader stopped; empty while it runs.
  const std::string& stopped() const { return stopped_; }

 private:
  bool start(const std::string& program, const std::vector<std::string>& arguments);
  std::int64_t ask(const image_request& request);
  void note_end();

  pid_t child_ = -1;
  int socket_ = -1;
  const std::byte* memory_ = nullptr;
  std::string stopped_;
};

}  // namespace zanvik
