// A legacy log through a window that moves over it, so that memory does not grow with the log.
//
// In: a log, of any size. Out: its records, each while the window that holds it is in memory; and
// what could not be read.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "evt/evt.h"
#include "source/found_log.h"
#include "source/log_losses.h"

namespace zanvik {

// Called with a window and its offset in the log, before the records in it are handed on. Offsets
// of these count from the window's start.
using evt_window_use = std::function<void(std::span<const std::byte> window, std::uint64_t offset)>;

// Lost are records that the walk sees and cannot hand on, and those that the header of a log that
// was closed counts and nobody sees.
log_losses walk_evt_windows(const found_log& log, evt_sink& sink, const evt_window_use& on_window);

}  // namespace zanvik
