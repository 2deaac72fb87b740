// Whether buffers that are sized by an upper bound have no spare room, so that sanitizers notice
// each write past them. Only the fuzz targets are built this way.
#pragma once

namespace zanvik {

#ifdef ZANVIK_TIGHT_BUFFERS
inline constexpr bool tight_buffers = true;
#else
inline constexpr bool tight_buffers = false;
#endif

}  // namespace zanvik
