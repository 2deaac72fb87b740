// A table of texts that many events share: each has an id, in the order in which they came.
//
// In: a text, as an event has it. Out: its id, added when it is new. Ids are remembered up to a
// limit, so that a log with ever new texts costs time in the database but no memory.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/hash_mix.h"
#include "case/database.h"

namespace zanvik {

class lookup_table {
 public:
  // Prepares the statements on the table of that name. False with an error of the database.
  [[nodiscard]] bool open(database& base, std::string_view table);

  // The text's id; 0 with an error of the database.
  std::int64_t id_of(std::string_view text);

  // After a transaction was undone: ids that it made are gone.
  void forget();

 private:
  std::int64_t find_or_add(std::string_view text);

  static constexpr std::size_t remembered_bytes = 8 << 20;
  static constexpr std::size_t entry_bytes = 96;  // about, without the text

  database* base_ = nullptr;
  statement find_;
  statement add_;
  std::unordered_map<std::string, std::int64_t, keyed_text_hash, std::equal_to<>> known_;
  std::size_t known_bytes_ = 0;
  std::string last_text_;
  std::int64_t last_id_ = 0;
  std::string clean_;
};

}  // namespace zanvik
