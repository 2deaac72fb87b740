#include "verbs/export_worker.h"

#include "base/stop_signal.h"
#include "verbs/ordered_events.h"

namespace zanvik {
namespace {

class text_result : public part_result {
 public:
  explicit text_result(export_work& work) : pieces(work.pieces), out_(work.out) {}
  void pass_on() override { pieces.write_to(out_); }
  std::uint64_t waiting_bytes() const override { return pieces.bytes(); }

  output_pieces pieces;

 private:
  output_buffer& out_;
};

class sorted_result : public part_result {
 public:
  explicit sorted_result(line_sorter& sorter) : sorter_(sorter) {}
  void pass_on() override { lines.hand_on(sorter_); }
  std::uint64_t waiting_bytes() const override { return lines.bytes(); }

  timed_lines lines;

 private:
  line_sorter& sorter_;
};

// What workers of both orders have in common.
class event_worker : public log_worker, public event_sink {
 public:
  explicit event_worker(export_work& work)
      : work_(work),
        form_(work.form.make(work.options)),
        filter_(work.logs.conditions),
        filtering_(work.logs.conditions.any()),
        reader_(*this, work.logs.slack) {
    if (work.logs.conditions.event_ids) reader_.take_event_ids(&*work.logs.conditions.event_ids);
    reader_.on_progress = [this](std::uint64_t bytes) { turn_->show_progress(bytes); };
  }

 protected:
  log_losses read_events(log_part& part, part_turn& turn) {
    turn_ = &turn;
    form_->start_log(part.log->source);
    return reader_.read(part);
  }
  // A block that was begun is read to its end.
  static bool is_cut_short(const log_part& part) { return !part.is_block && stop_signal() != 0; }
  bool takes(const event_view& event) { return !filtering_ || filter_.takes(event); }

  export_work& work_;
  std::unique_ptr<event_form> form_;
  part_turn* turn_ = nullptr;

 private:
  event_filter filter_;
  const bool filtering_;
  log_event_reader reader_;
};

class text_worker : public event_worker, private piece_sink {
 public:
  explicit text_worker(export_work& work)
      : event_worker(work), out_(work.one_thread ? work.out : own_) {}

  std::unique_ptr<part_result> read(log_part& part, part_turn& turn) override {
    auto result = std::make_unique<text_result>(work_);
    result_ = result.get();
    result->lost = read_events(part, turn);
    result->cut_short = is_cut_short(part);
    (void)own_.flush();
    return result;
  }
  void on_event(const event_view& event) override {
    if (takes(event)) form_->write(out_, event);
  }

 private:
  std::unique_ptr<char[]> take(std::unique_ptr<char[]> piece, std::size_t bytes) override {
    auto next = result_->pieces.add(std::move(piece), bytes);
    if (turn_->has_come(result_->pieces.bytes())) result_->pass_on();
    return next;
  }

  output_buffer own_{static_cast<piece_sink&>(*this)};
  output_buffer& out_;
  text_result* result_ = nullptr;
};

class sorted_worker : public event_worker {
 public:
  explicit sorted_worker(export_work& work)
      : event_worker(work), lines_(*form_, work.by_time->unique()) {}

  std::unique_ptr<part_result> read(log_part& part, part_turn& turn) override {
    auto result = std::make_unique<sorted_result>(*work_.by_time);
    result_ = result.get();
    log_ = part.number;
    result->lost = read_events(part, turn);
    result->cut_short = is_cut_short(part);
    return result;
  }
  void on_event(const event_view& event) override {
    if (!takes(event)) return;
    lines_.make(event, log_, result_->lines);
    if (turn_->has_come(result_->lines.bytes())) result_->pass_on();
  }

 private:
  timed_line_maker lines_;
  std::uint64_t log_ = 0;
  sorted_result* result_ = nullptr;
};

}  // namespace

std::unique_ptr<log_worker> make_export_worker(export_work& work) {
  if (work.by_time) return std::make_unique<sorted_worker>(work);
  return std::make_unique<text_worker>(work);
}

}  // namespace zanvik
