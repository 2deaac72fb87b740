#include "keep/record_keeper.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/limits.h"
#include "base/number_text.h"
#include "base/text.h"
#include "events/evtx_fields.h"
#include "keep/slack_columns.h"

namespace zanvik {
namespace {

constexpr std::string_view null_text = "[null]";

// The text of a value that was replaced by one, on one line.
std::string replaced_column_text(std::string text, const plan_value& value, cell_form form,
                                 bool& marked) {
  if (value.one_line) std::erase(text, '\n');
  const char* end = clean_cell_text(text.data(), text.data() + text.size(), form, marked);
  text.resize(static_cast<std::size_t>(end - text.data()));
  return text;
}

// The most that a record of the layout repeats of it.
std::size_t repeated_bytes(const record_layout& layout) {
  std::size_t bytes = 0;
  for (const std::string& name : layout.names) bytes += repeated_column_bytes + name.size();
  for (const layout_field& field : layout.fields) {
    bytes += repeated_column_bytes + field.name.size() + field.text.size();
  }
  return bytes;
}

// Writes the cells of one record to the arena.
class block_writer {
 public:
  block_writer(record_arena& arena, value_writer& writer)
      : arena_(arena),
        writer_(writer),
        at_(arena.reserve(0)),
        begin_(at_),
        limit_(at_ + arena.room()) {}

  // Returns the text as it was written, valid until the next cell.
  std::string_view add(const raw_value& raw, const plan_value& value, cell_form form) {
    make_room(value_text_bound(raw));
    bool marked = false;
    char* end = write_cell_text(writer_, at_ + 1, raw, form, marked);
    if (end == at_ + 1 && value.null_if_empty && raw.type == value_type::binary) {
      end = copy(end, null_text);
    }
    return finish(end, marked);
  }

  std::string_view add(std::string_view text, bool marked) {
    make_room(text.size());
    return finish(copy(at_ + 1, text), marked);
  }
  void add(std::string_view text) { add(text, needs_mark(text)); }

  // Keeps the cells; returns the first one.
  const char* keep() {
    arena_.keep(static_cast<std::size_t>(at_ - begin_));
    return begin_;
  }

 private:
  // Makes room for a cell with a text of this many bytes.
  void make_room(std::size_t bytes) {
    bytes += max_cell_head;
    if (!tight_buffers && bytes <= static_cast<std::size_t>(limit_ - at_)) return;
    const auto used = static_cast<std::size_t>(at_ - begin_);
    begin_ = arena_.extend(used, bytes);
    at_ = begin_ + used;
    limit_ = begin_ + arena_.room();
  }

  std::string_view finish(char* end, bool marked) {
    char* const text = at_ + 1;
    if (is_lone_comma(text, end)) end = text;
    const auto length = static_cast<std::size_t>(end - text);
    at_ = finish_cell(at_, end, marked);
    return {at_ - length, length};
  }

  static char* copy(char* out, std::string_view text) {
    if (!text.empty()) std::memcpy(out, text.data(), text.size());
    return out + text.size();
  }

  record_arena& arena_;
  value_writer& writer_;
  char* at_;     // where the next cell is written
  char* begin_;  // of the cells so far
  char* limit_;
};

}  // namespace

bool record_keeper::keep(const record_fields& record) {
  if (contents_id_ != records_.contents_id()) {
    contents_id_ = records_.contents_id();
    slot_columns_.clear();
    bare_plans_.clear();
    description_ = records_.intern_text(command_.name);
    last_provider_ = records_.intern_text({});
  }
  LogRecord kept = head_of(record);
  if (!fill(record, kept)) return false;
  if (record.after_slack) [[unlikely]]
    add_slack_columns(record, kept);
  if (command_.emit) records_.add(kept);
  return true;
}

void record_keeper::add_slack_columns(const record_fields& record, LogRecord& kept) {
  // A separate shape for each set of empty slots would repeat the literals of the record's shape.
  if (kept.shape && !records_.repeat(kept.shape->repeated_bytes)) return;
  const bool cleaned = record.plain && record.in_slack;
  if (!cleaned && kept.shape && slot_columns_.add(kept, record, records_)) return;
  column_map columns = columns_of(kept);
  add_slot_columns(columns, kept.flags, record);
  if (cleaned) clean_slack_columns(columns);
  pack_columns(kept, columns, records_);
}

// With the search for slack on, a record whose slots give no ID is asked for a field of its
// template; this does not change what is selected.
std::uint64_t record_keeper::event_id_of(const record_fields& record) {
  if (record.event_id != 0 || record.plain || !record.slack_search) return record.event_id;
  const layout_field* field = find_layout_field(*record.layout, "EventID");
  const auto id = field ? number_from_text(field->text) : std::nullopt;
  return static_cast<std::uint64_t>(id.value_or(0));
}

// Gives the record its columns; all data takes precedence over any list of names.
bool record_keeper::fill(const record_fields& record, LogRecord& kept) {
  if (!command_.all_data && command_.pull.empty()) return true;
  if (record.layout->id == 0) {
    if (!command_.all_data) return fill_plain_pulled(record, kept);
    fill_plain(record, kept);
    return true;
  }
  const column_plan& plan = plan_for(record);
  if (!plan.selects) return false;
  kept.shape = plan.shape;
  kept.level = plan.level;
  kept.provider = provider_of(record, plan);
  kept.values = write_block(record, plan, kept);
  return true;
}

LogRecord record_keeper::head_of(const record_fields& record) {
  LogRecord kept;
  kept.report_entry_id = command_.index;
  kept.time = record.time;
  kept.event_id = event_id_of(record);
  kept.record_number = record.number;
  kept.file_offset = record.file_offset;
  kept.description = description_;
  const bool inside = record.number >= record.first_number && record.number <= record.last_number;
  kept.flags = inside ? record_inside_range : record_outside_range;
  if (record.plain || record.in_slack) kept.flags |= record_plain_or_slack;
  return kept;
}

// The plan for all records of the layout; if the log has already repeated too much of its
// templates, one that repeats nothing.
const column_plan& record_keeper::plan_for(const record_fields& record) {
  plans_.use_with(records_);
  const column_plan* plan = plans_.find(record.layout->id);
  // Before it takes memory: a shape repeats its layout at most. The same for a plan that is there,
  // or the result would depend on the records before.
  const std::size_t most = plan ? plan->layout_bytes : repeated_bytes(*record.layout);
  if (!records_.can_repeat(most)) return bare_plan_for(record);
  if (!plan) {
    column_plan made = make_plan(record, records_);
    made.layout_bytes = most;
    plan = made.reusable ? &plans_.add(record.layout->id, std::move(made))
                         : &(own_plan_ = std::move(made));
  }
  const std::size_t provider = plan->provider ? plan->provider->size() : 0;
  const std::size_t repeated = plan->selects ? plan->shape->repeated_bytes + provider : 0;
  return records_.repeat(repeated) ? *plan : bare_plan_for(record);
}

column_plan record_keeper::make_plan(const record_fields& record, record_container& records) const {
  return command_.all_data ? plan_all_data(record, command_.skip_system_fields, records)
                           : plan_pulled(record, command_.pull, records);
}

const column_plan& record_keeper::bare_plan_for(const record_fields& record) {
  const auto known = bare_plans_.find(record.layout->id);
  if (known != bare_plans_.end()) return known->second;
  const column_plan whole = make_plan(record, plain_records_);
  column_plan bare = whole.selects ? without_repeats(whole, records_) : whole;
  plain_records_.clear();
  if (!bare.reusable) return own_plan_ = std::move(bare);
  if (bare_plans_.size() >= limits::cached_layouts) bare_plans_.clear();
  return bare_plans_.emplace(record.layout->id, std::move(bare)).first->second;
}

const std::string* record_keeper::provider_of(const record_fields& record,
                                              const column_plan& plan) {
  if (plan.provider) return plan.provider;
  scratch_.clear();
  append_column_text(scratch_, record, static_cast<std::size_t>(plan.provider_slot), plan.form);
  if (*last_provider_ != scratch_) last_provider_ = records_.intern_text(scratch_);
  return last_provider_;
}

const char* record_keeper::write_block(const record_fields& record, const column_plan& plan,
                                       LogRecord& kept) {
  block_writer writer(records_.arena(), writer_);
  const bool has_texts = !record.slot_texts.empty();
  std::ptrdiff_t to_level = plan.level_value;  // values before the column "Level"
  for (const plan_value& value : plan.values) {
    const std::string* replaced = has_texts ? record.replaced_text(value.slot) : nullptr;
    std::string_view text;
    if (replaced) [[unlikely]] {
      bool marked = false;
      const std::string cleaned = replaced_column_text(*replaced, value, plan.form, marked);
      text = writer.add(cleaned, marked);
    } else {
      text = writer.add(record.value(value.slot), value, plan.form);
    }
    if (to_level-- == 0) kept.level = level_from_text(text);
  }
  return writer.keep();
}

// A record without templates has its fields as values; only their names are shared.
void record_keeper::fill_plain(const record_fields& record, LogRecord& kept) {
  plain_columns_.clear();
  printable_names_.clear();
  bool event_id_dropped = !command_.skip_system_fields;
  bool system_time_dropped = !command_.skip_system_fields;
  for (const layout_field& field : record.layout->fields) {
    if (field.name == "Provider Name") {
      kept.provider = records_.intern_text(field.text);
    } else if (!event_id_dropped && field.name == "EventID") {
      event_id_dropped = true;
    } else if (!system_time_dropped && field.name == "SystemTime") {
      system_time_dropped = true;
    } else {
      if (field.name == "Level") kept.level = level_from_text(field.text);
      const std::size_t repeated = repeated_column_bytes + field.name.size() + field.text.size();
      if (records_.repeat(repeated)) add_plain_column(field, record.slack_search);
    }
  }
  if (!printable_names_.empty()) {
    // A changed name may be elsewhere in the order, and two may have become one.
    const auto by_name = [](const auto& a, const auto& b) { return a.first < b.first; };
    const auto same_name = [](const auto& a, const auto& b) { return a.first == b.first; };
    std::stable_sort(plain_columns_.begin(), plain_columns_.end(), by_name);
    plain_columns_.erase(std::unique(plain_columns_.begin(), plain_columns_.end(), same_name),
                         plain_columns_.end());
  }
  names_.clear();
  for (const auto& [name, field] : plain_columns_) names_.push_back(name);
  kept.shape = records_.intern_names(names_);
  block_writer writer(records_.arena(), writer_);
  for (const auto& [name, field] : plain_columns_) writer.add(field->text);
  kept.values = writer.keep();
}

// With the search for slack on, names are not changed: overwritten bytes give many.
void record_keeper::add_plain_column(const layout_field& field, bool as_it_is) {
  if (as_it_is || is_printable_name(field.name)) {
    plain_columns_.emplace_back(field.name, &field);
  } else {
    plain_columns_.emplace_back(printable_names_.emplace_back(printable_name(field.name)), &field);
  }
}

// The same for named fields. The plan has all of them as texts of this record; only the names can
// be shared.
bool record_keeper::fill_plain_pulled(const record_fields& record, LogRecord& kept) {
  const column_plan plan = plan_pulled(record, command_.pull, plain_records_);
  if (!plan.selects) return false;
  kept.level = plan.level;
  kept.provider = records_.intern_text(*plan.provider);
  names_.clear();
  for (const shape_column& column : plan.shape->columns) names_.push_back(column.name);
  kept.shape = records_.intern_names(names_);
  block_writer writer(records_.arena(), writer_);
  for (const shape_column& column : plan.shape->columns) writer.add(column.text);
  kept.values = writer.keep();
  plain_records_.clear();
  return true;
}

}  // namespace zanvik
