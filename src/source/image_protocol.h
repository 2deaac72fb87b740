// What the program and the reader of disk images say to each other. The reader is a process of its
// own, since it stands on parsers of other people: what an image does to them costs that image.
//
// The program sends a request and gets a reply; what is longer stands in memory that both have. The
// reader is started with the image's kind, with what is wanted of it, and with its path.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik {

inline constexpr std::size_t image_piece_bytes = 1 << 20;  // of the common memory
inline constexpr int image_socket = 3;                     // descriptors of the reader
inline constexpr int image_memory = 4;

enum class image_use : std::uint32_t {
  logs,        // the logs among its files
  bytes,       // its bytes
  free_space,  // the free space of its volumes
};

enum class image_question : std::uint32_t {
  entry,    // `item`: an image_entry and its path, in memory; the reply is 0 behind the last one
  bytes,    // `size` bytes of `item` from `offset` on, in memory; the reply is their count
  extents,  // extents of the volume `item` from the `offset`th on, in memory; likewise
};

struct image_request {
  image_question question = image_question::entry;
  std::uint32_t item = 0;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

enum class image_item : std::uint32_t {
  log,
  whole,    // the image itself
  volume,   // its free space
  problem,  // the path tells what could not be read, behind a NUL why
};

struct image_entry {
  image_item what = image_item::log;
  std::uint32_t is_legacy = 0;
  std::uint32_t is_deleted = 0;
  std::uint32_t path_bytes = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // seconds since 1970; 0 when not known
};

struct image_extent {
  std::uint64_t offset = 0;  // in the image
  std::uint64_t size = 0;
};

}  // namespace zanvik
