#include "pipeline/ordered_work.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>

#include "base/limits.h"

namespace zanvik {
namespace {

struct run_log {
  std::string committed;
  std::atomic<std::size_t> started{0}, most_ahead{0}, done{0};
  std::atomic<bool> two_commits{false}, committing{false};
};

// Work takes a different time for each job, so that they end out of order.
class letter_job : public ordered_job {
 public:
  letter_job(run_log& log, std::size_t number, std::uint64_t bytes, bool takes_turn = false)
      : log_(log), number_(number), bytes_(bytes), takes_turn_(takes_turn) {}

  void work(std::size_t) override {
    const std::size_t ahead = ++log_.started - log_.done;
    std::size_t most = log_.most_ahead;
    while (most < ahead && !log_.most_ahead.compare_exchange_weak(most, ahead)) {
    }
    volatile std::size_t spun = 0;
    for (std::size_t i = 0; i < (number_ * 7919) % 13 * 2000; ++i) spun = spun + 1;
    if (takes_turn_) {
      wait_turn();
      put('<');
    }
  }
  void commit() override {
    if (log_.committing.exchange(true)) log_.two_commits = true;
    put(static_cast<char>('a' + number_ % 26));
    ++log_.done;
    log_.committing = false;
  }
  std::uint64_t waiting_bytes() const override { return bytes_; }

 private:
  void put(char letter) { log_.committed += letter; }

  run_log& log_;
  const std::size_t number_;
  const std::uint64_t bytes_;
  const bool takes_turn_;
};

std::string expected_letters(std::size_t jobs) {
  std::string letters;
  for (std::size_t i = 0; i < jobs; ++i) {
    if (i % 5 == 3) letters += '<';
    letters += static_cast<char>('a' + i % 26);
  }
  return letters;
}

TEST(ordered_work, results_come_in_order_on_any_number_of_threads) {
  for (const unsigned threads : {1u, 2u, 3u, 8u}) {
    run_log log;
    ordered_work work(threads);
    EXPECT_EQ(work.threads(), threads);
    for (std::size_t i = 0; i < 500; ++i) {
      work.add(std::make_unique<letter_job>(log, i, 10, i % 5 == 3));
    }
    work.finish();
    EXPECT_EQ(log.committed, expected_letters(500)) << threads;
    EXPECT_FALSE(log.two_commits) << threads;
    work.add(std::make_unique<letter_job>(log, 0, 0));  // more may follow
    work.finish();
    EXPECT_EQ(log.done, 501u) << threads;
  }
}

// Results that fill the memory for them keep others from starting, but never for ever.
TEST(ordered_work, waiting_results_are_limited) {
  run_log log;
  ordered_work work(4);
  for (std::size_t i = 0; i < 200; ++i) {
    work.add(std::make_unique<letter_job>(log, i, 5 * limits::waiting_bytes_per_thread));
  }
  work.finish();
  EXPECT_EQ(log.done, 200u);
  EXPECT_LE(log.most_ahead, 5u);  // one a thread, and one that waits
}

TEST(ordered_work, an_exception_ends_the_work) {
  class failing_job : public ordered_job {
   public:
    explicit failing_job(bool in_commit) : in_commit_(in_commit) {}
    void work(std::size_t) override {
      if (!in_commit_) throw std::runtime_error("work");
    }
    void commit() override { throw std::runtime_error("commit"); }

   private:
    const bool in_commit_;
  };
  for (const bool in_commit : {false, true}) {
    run_log log;
    ordered_work work(3);
    for (std::size_t i = 0; i < 20; ++i) work.add(std::make_unique<letter_job>(log, i, 0));
    work.add(std::make_unique<failing_job>(in_commit));
    for (std::size_t i = 0; i < 20; ++i) work.add(std::make_unique<letter_job>(log, i, 0));
    EXPECT_THROW(work.finish(), std::runtime_error);
    EXPECT_EQ(log.committed, std::string("abcdefghijklmnopqrst").substr(0, log.committed.size()));
  }
}

}  // namespace
}  // namespace zanvik
