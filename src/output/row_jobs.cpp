#include "output/row_jobs.h"

#include <utility>

namespace zanvik {

class row_jobs::job : public ordered_job {
 public:
  job(row_jobs& rows, make_rows make) : rows_(rows), make_(std::move(make)) {}

  void work(std::size_t thread) override {
    buffer_ = rows_.take_buffer();
    make_(*buffer_, thread);
  }
  void commit() override {
    const std::string_view text = buffer_->text();
    rows_.out_.write(text.data(), static_cast<std::streamsize>(text.size()));
    buffer_->clear();
    const std::lock_guard held(rows_.mutex_);
    rows_.free_.push_back(std::move(buffer_));
  }
  std::uint64_t waiting_bytes() const override { return buffer_ ? buffer_->capacity() : 0; }

 private:
  row_jobs& rows_;
  make_rows make_;
  std::unique_ptr<row_buffer> buffer_;
};

void row_jobs::add(make_rows make) {
  work_.add(std::make_unique<job>(*this, std::move(make)), ordered_work::small_jobs);
}

std::unique_ptr<row_buffer> row_jobs::take_buffer() {
  const std::lock_guard held(mutex_);
  if (free_.empty()) return std::make_unique<row_buffer>();
  std::unique_ptr<row_buffer> buffer = std::move(free_.back());
  free_.pop_back();
  return buffer;
}

}  // namespace zanvik
