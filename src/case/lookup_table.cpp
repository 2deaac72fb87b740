#include "case/lookup_table.h"

#include "case/clean_text.h"

namespace zanvik {

bool lookup_table::open(database& base, std::string_view table) {
  base_ = &base;
  forget();
  const std::string name(table);
  find_ = base.prepare("SELECT id FROM " + name + " WHERE name = ?");
  add_ = base.prepare("INSERT INTO " + name + " (name) VALUES (?)");
  return find_.prepared() && add_.prepared();
}

std::int64_t lookup_table::id_of(std::string_view text) {
  if (last_id_ != 0 && text == last_text_) return last_id_;
  const auto found = known_.find(text);
  const std::int64_t id = found != known_.end() ? found->second : find_or_add(text);
  last_id_ = id;
  last_text_ = text;
  return id;
}

std::int64_t lookup_table::find_or_add(std::string_view text) {
  const std::string_view name = clean_text(text, clean_);
  find_.bind(1, name);
  std::int64_t id = find_.next() ? find_.integer(0) : 0;
  find_.reset();
  if (id == 0) {
    if (base_->failed() || !add_.bind(1, name).run()) return 0;
    id = base_->last_id();
  }
  if (known_bytes_ > remembered_bytes) forget();
  known_bytes_ += text.size() + entry_bytes;
  known_.emplace(text, id);
  return id;
}

void lookup_table::forget() {
  known_.clear();
  known_bytes_ = 0;
  last_id_ = 0;
}

}  // namespace zanvik
