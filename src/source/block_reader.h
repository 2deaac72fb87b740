// Blocks of an open file or stream, one behind the other.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "source/found_log.h"

namespace zanvik {

// Reads until `buffer` is full or the input ends, at the position or at `offset`. Returns the bytes
// read, -1 when the first of them cannot be.
ssize_t read_fully(int descriptor, std::span<std::byte> buffer);
ssize_t read_fully(int descriptor, std::span<std::byte> buffer, std::uint64_t offset);

// The bytes of the log at `offset`; not for streams.
ssize_t read_fully(const found_log& log, std::span<std::byte> buffer, std::uint64_t offset);

// Called with a block and its offset; the bytes may be changed and live until it returns.
using block_use = std::function<void(std::span<std::byte>, std::uint64_t)>;

// Hands out the log from `offset` on in blocks of `block_bytes`, the last one shorter. Holes of a
// file are passed over. Returns false when a part could not be read; what could be has been used.
bool read_blocks(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                 const block_use& use);

// The same into memory of the caller's: `room` is asked for some of it, for the bytes at an offset,
// and `use` gets their count.
bool read_into(const found_log& log,
               const std::function<std::span<std::byte>(std::uint64_t offset)>& room,
               const std::function<void(std::size_t bytes)>& use);

}  // namespace zanvik
