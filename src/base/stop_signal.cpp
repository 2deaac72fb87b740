#include "base/stop_signal.h"

#include <signal.h>

#include <atomic>

namespace zanvik {
namespace {

constexpr int signals[] = {SIGINT, SIGTERM};

std::atomic<int> caught{0};
static_assert(std::atomic<int>::is_always_lock_free);  // a handler may use it

void on_signal(int number) {
  caught = number;
  for (const int each : signals) ::signal(each, SIG_DFL);
}

}  // namespace

// Without SA_RESTART, so that a read of a stream that brings nothing ends.
void catch_stop_signals() {
  for (const int each : signals) {
    struct sigaction now {};
    if (::sigaction(each, nullptr, &now) != 0 || now.sa_handler == SIG_IGN) continue;
    struct sigaction wanted {};
    wanted.sa_handler = on_signal;
    ::sigemptyset(&wanted.sa_mask);
    ::sigaction(each, &wanted, nullptr);
  }
}

int stop_signal() { return caught.load(std::memory_order_relaxed); }

}  // namespace zanvik
