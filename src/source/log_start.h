// What a file is, by its first bytes and never by its name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "events/event_view.h"
#include "evtx/container/chunk.h"

namespace zanvik {

// Bytes that tell what a file is, as far as it has them.
inline constexpr std::size_t log_start_bytes = evtx_layout::file_header_bytes + 8;

// The kind of log that begins with `head`. A log that has lost its file header shows by its first
// chunk.
std::optional<log_kind> log_kind_of(std::span<const std::byte> head);

enum class image_kind : std::uint8_t {
  raw,   // the bytes of a disk or of one of its partitions
  ewf,   // first file of an E01 image
  vmdk,  // a sparse extent, or the text that describes extents
  vhd,
};

// The kind of disk image that begins with `head`, and ends with `tail`, its last 512 bytes: by what
// a container begins with, a partition table, or the first sectors of a file system.
std::optional<image_kind> image_kind_of(std::span<const std::byte> head,
                                        std::span<const std::byte> tail);

}  // namespace zanvik
