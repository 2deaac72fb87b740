// Large pages for the heap. A run touches some ten megabytes of small allocations and read buffers
// once each; fetched in pages of 4 KiB, that takes the kernel as long as decoding takes us.
#pragma once

namespace zanvik {

// Lets the heap grow in one large step and asks the system to back it with large pages. Call it
// once, before anything else. Where the system has no large pages, or the allocator is another
// one, nothing changes but the size of that step.
void use_large_heap_pages();

// The same for a thread beside the first one, which calls it before anything else.
void use_large_pages_in_thread();

}  // namespace zanvik
