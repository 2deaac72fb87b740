// Whether buffers that are written by an upper bound hold no more than what was asked of them, so
// that sanitizers see each write behind it. Only the fuzz targets are built so.
#pragma once

namespace zanvik {

#ifdef ZANVIK_TIGHT_BUFFERS
inline constexpr bool tight_buffers = true;
#else
inline constexpr bool tight_buffers = false;
#endif

}  // namespace zanvik
