// The items of a result, with the time that each shows as its key.
//
// An item that shows no time, or an earlier one than the item before it, stays where it is: it has
// the key of the item before it, and the input remembers that it is out of order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "merge/result_form.h"
#include "pipeline/sorted_input.h"

namespace zanvik {

class result_input : public sorted_input {
 public:
  result_input() = default;
  result_input(const result_input&) = delete;
  result_input& operator=(const result_input&) = delete;
  ~result_input() override;

  // Opens the result, "-" for standard input, and reads its first bytes through a buffer of that
  // size, which grows for a longer item. False, with `error` set, when that cannot be.
  [[nodiscard]] bool open(const std::string& path, std::size_t buffer_bytes);
  // What the result begins with. Nothing: it is empty.
  std::string_view head() const { return {buffer_.data() + at_, end_ - at_}; }
  int descriptor() const { return descriptor_; }

  // Cuts the result as `form` says, which head() showed, from the header on if it has one.
  void set_form(const result_form& form) { form_ = &form; }
  // The header, which is taken off; false when it does not end.
  [[nodiscard]] bool take_header(std::string& header);

  bool next() override;
  std::string_view bytes() override { return item_; }

  // Whether an item was out of order; its number, from 1.
  std::uint64_t out_of_order() const { return out_of_order_; }
  // Why the input ended early; empty when it did not.
  const std::string& error() const { return error_; }

 private:
  bool take_item();
  bool fill();

  const result_form* form_ = nullptr;
  int descriptor_ = -1;
  std::vector<char> buffer_;
  std::size_t at_ = 0, end_ = 0;  // what is unread stands between them
  bool all_read_ = false;
  std::string_view item_;
  std::uint64_t items_ = 0, out_of_order_ = 0;
  std::string error_;
};

}  // namespace zanvik
