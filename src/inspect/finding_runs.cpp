#include "inspect/finding_runs.h"

#include "inspect/record_sequence.h"

namespace zanvik {

void finding_runs::add(const area& record, std::optional<std::uint64_t> chunk,
                       std::string_view text) {
  const bool goes_on = open_ && last_ != ~std::uint64_t{0} && record.number == last_ + 1 &&
                       chunk == chunk_ && text == text_;
  if (!goes_on) {
    flush();
    open_ = true;
    offset_ = record.offset;
    first_ = record.number;
    chunk_ = chunk;
    text_ = text;
  }
  last_ = record.number;
}

void finding_runs::flush() {
  if (!open_) return;
  open_ = false;
  finding& made = findings_.add(kind_, offset_, numbers_text(first_, last_) + ", " + text_);
  made.chunk = chunk_;
  made.record = first_;
}

}  // namespace zanvik
