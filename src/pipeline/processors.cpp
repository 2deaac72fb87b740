#include "pipeline/processors.h"

#include <sched.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "base/limits.h"

namespace zanvik {
namespace {

// Processors in the affinity mask; 0 when it cannot be read. The mask of the kernel may be longer
// than that of the library.
unsigned allowed_processors() {
  for (std::size_t sets = 1; sets <= 64; sets *= 2) {
    std::vector<cpu_set_t> mask(sets);
    const std::size_t bytes = sets * sizeof(cpu_set_t);
    if (::sched_getaffinity(0, bytes, mask.data()) == 0) {
      return static_cast<unsigned>(CPU_COUNT_S(bytes, mask.data()));
    }
  }
  return 0;
}

// Processors' worth of time that the control group grants, rounded up; 0 without a limit. Only the
// group that the process sees as its own is looked at, as in a container.
unsigned granted_processors() {
  std::ifstream file("/sys/fs/cgroup/cpu.max");
  std::string quota;
  std::uint64_t period = 0;
  if (!(file >> quota >> period) || period == 0 || quota == "max") return 0;
  std::uint64_t granted = 0;
  for (const char c : quota) {
    if (c < '0' || c > '9' || granted > UINT32_MAX) return 0;
    granted = granted * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return static_cast<unsigned>(
      std::min<std::uint64_t>(granted / period + (granted % period != 0), limits::threads));
}

}  // namespace

unsigned usable_processors() {
  const unsigned granted = granted_processors();
  const unsigned allowed = std::max(1u, allowed_processors());
  return std::min(granted == 0 ? allowed : std::min(allowed, granted), limits::threads);
}

}  // namespace zanvik
