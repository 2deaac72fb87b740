#include "evtx/record_reader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/text.h"
#include "base/time_format.h"
#include "base/time_parse.h"
#include "evtx/record_time.h"
#include "evtx/templates/template_record.h"

namespace zanvik {
namespace {

// The text of the field of exactly that name, else of the first of that name in any case.
std::string field_text(const field_map& fields, std::string_view name) {
  const auto exact = fields.find(name);
  if (exact != fields.end()) return exact->second.text;
  const auto found = std::find_if(fields.begin(), fields.end(), [name](const auto& field) {
    return equal_nocase(field.first, name);
  });
  return found == fields.end() ? std::string() : found->second.text;
}

}  // namespace

void record_reader::start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                                std::uint64_t file_offset) {
  budget_ = {};
  chunk_ = {
      byte_cursor(bytes, file_offset), bound, file_offset, &budget_, &memory_, options_.full_sids};
  memory_.start_chunk();
  store_.start_chunk(chunk_);
  record_.first_number =
      chunk_.bytes.at_or_zero<std::uint64_t>(evtx_layout::first_logical_record_at);
  record_.last_number = chunk_.bytes.at_or_zero<std::uint64_t>(evtx_layout::nth_logical_record_at);
}

record_fields* record_reader::read(std::uint64_t offset) {
  read_header(offset);
  record_.in_slack = false;
  const std::uint64_t bxml = offset + evtx_layout::record_header_bytes;
  const auto head = fragment_instance_at(chunk_, bxml);
  const bool good = head ? read_template(bxml, *head) : read_plain(bxml, no_limit);
  return good ? &record_ : nullptr;
}

record_fields* record_reader::read_slack(std::uint64_t offset, std::uint64_t area_bytes) {
  read_header(offset);
  record_.in_slack = true;
  const std::uint64_t bxml = offset + evtx_layout::record_header_bytes;
  const auto head = fragment_instance_in(chunk_, bxml, area_bytes);
  const bool good = head ? read_template(bxml, *head) : read_plain(bxml, area_bytes);
  return good ? &record_ : nullptr;
}

void record_reader::read_header(std::uint64_t offset) {
  const byte_cursor& bytes = chunk_.bytes;
  record_.chunk = &chunk_;
  record_.size = bytes.at_or_zero<std::uint32_t>(offset + 4);
  record_.number = bytes.at_or_zero<std::uint64_t>(offset + 8);
  record_.time_written = bytes.at_or_zero<std::uint64_t>(offset + 16);
  record_.file_offset = chunk_.file_offset + offset;
  record_.event_id = 0;
  record_.slot_texts.clear();
  memory_.start_record();
}

bool record_reader::read_template(std::uint64_t bxml, const instance_head& head) {
  if (head.definition > evtx_layout::chunk_bytes) return false;
  record_.plain = false;
  record_.time = record_.time_written;
  switch (quick_records_.read(chunk_, bxml, head)) {
    case quick_records::answer::too_much:
      return false;
    case quick_records::answer::unusual:
      if (!decode_template_record(bxml, head, budget_)) return false;
      break;
    case quick_records::answer::ordinary:
      if (quick_) {
        take_quick_record();
      } else {
        // It costs the same as on the quick path, which has been charged.
        work_budget unlimited = work_budget::unlimited();
        unlimited.body_bytes = limits::layout_bytes;
        if (!decode_template_record(bxml, head, unlimited)) return false;
      }
  }
  find_event_id();
  if (options_.event_time) use_own_time();
  return true;
}

void record_reader::take_quick_record() {
  record_.slots = quick_records_.slots();
  record_.layout = quick_records_.layout();
  if (std::string* text = quick_records_.plain_text()) {
    record_.slot_texts.push_back({quick_records_.plain_slot(), std::move(*text)});
  }
}

bool record_reader::decode_template_record(std::uint64_t bxml, const instance_head& head,
                                           work_budget& budget) {
  chunk_view view = chunk_;
  view.budget = &budget;
  auto content = read_template_record(store_.catalogue(), view, bxml, head, nullptr);
  if (!content) return false;
  own_layout_ = {};
  flatten_content(std::move(*content), slots_, record_.slot_texts, own_layout_);
  record_.slots = slots_;
  record_.layout = store_.intern(std::move(own_layout_));
  return true;
}

// Searched among the slots; only if a record has none is a field of its template used.
void record_reader::find_event_id() {
  if (record_.layout->event_id_slot < 0) {
    const layout_field* field =
        record_.slots.empty() ? find_layout_field(*record_.layout, "EventID") : nullptr;
    if (field) record_.event_id = static_cast<std::uint32_t>(std::atol(field->text.c_str()));
    return;
  }
  const auto slot = static_cast<std::size_t>(record_.layout->event_id_slot);
  const raw_value value = record_.value(slot);
  if (value.type == value_type::uint16 && value.readable >= 2 && record_.slot_texts.empty()) {
    std::uint16_t id;
    std::memcpy(&id, value.data, sizeof(id));
    record_.event_id = id;
    return;
  }
  scratch_.clear();
  append_slot_text(scratch_, record_, slot);
  record_.event_id = static_cast<std::uint32_t>(std::atol(scratch_.c_str()));
}

void record_reader::use_own_time() {
  if (const std::uint64_t own = time_created(record_)) record_.time = own;
}

// The header's time, which is when a collector wrote the record, as a separate field.
void record_reader::add_collector_time(field_map& fields) const {
  std::string date;
  std::string time;
  (void)format_with_strings(date, time, qx::time(record_.time_written, qx::type_time::filetime),
                            formats_.date_format, formats_.time_format);
  fields.try_emplace("TimeCreated (Collector) UTC",
                     field_value{value_type::filetime, date + " " + time, 0});
}

bool record_reader::read_plain(std::uint64_t bxml, std::uint64_t limit) {
  bxml_cursor cursor{chunk_};
  cursor.position = bxml;
  cursor.budget = record_.in_slack ? &budget_.slack_bytes : &budget_.plain_bytes;
  field_pool_.release();
  field_map fields(&field_pool_);
  decode_bxml(nullptr, &fields, cursor, limit);
  // A record whose budget ran out in the middle would be misread.
  if (fields.empty() || *cursor.budget <= 0) return false;
  record_.plain = true;
  record_.event_id = static_cast<std::uint32_t>(std::atol(field_text(fields, "EventID").c_str()));
  record_.time = parse_iso8601(field_text(fields, "TimeCreated SystemTime"));
  if (record_.time != 0) {
    add_collector_time(fields);
  } else {
    record_.time = record_.time_written;
  }
  own_layout_ = {};
  move_fields(fields, own_layout_);
  slots_.clear();
  record_.slots = slots_;
  record_.layout = &own_layout_;
  if (options_.event_time) use_own_time();
  return true;
}

}  // namespace zanvik
