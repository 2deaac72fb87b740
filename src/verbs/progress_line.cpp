#include "verbs/progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zanvik {

bool progress_line::has_terminal() { return ::isatty(STDERR_FILENO) == 1; }

void progress_line::update(std::uint64_t done) {
  using namespace std::chrono_literals;
  const auto now = clock::now();
  if (!show_ || now - last_ < 250ms) return;
  last_ = now;
  shown_ = true;
  const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
  const double spent = std::chrono::duration<double>(now - start_).count();
  const double left = share > 0 ? spent / share - spent : 0;
  std::fprintf(stderr, "\r%3.0f %%, %.0f s left ", 100 * share, left);
  std::fflush(stderr);
}

progress_line::~progress_line() {
  if (shown_) std::fputs("\r                        \r", stderr);
}

}  // namespace zanvik
