#include "events/evt_events.h"

#include "base/time_value.h"

namespace zanvik {
namespace {

enum slot_number : std::uint16_t {
  slot_provider,
  slot_event_id,
  slot_qualifiers,
  slot_level,
  slot_task,
  slot_keywords,
  slot_time,
  slot_number_of_record,
  slot_computer,
  slot_user,
  slot_data,
  first_string
};

// Types of a record.
constexpr std::uint16_t type_error = 1;
constexpr std::uint16_t type_warning = 2;
constexpr std::uint16_t type_audit_success = 8;
constexpr std::uint16_t type_audit_failure = 16;

std::uint8_t level_of(std::uint16_t type) {
  switch (type) {
    case type_error:
      return 2;
    case type_warning:
      return 3;
    case type_audit_success:
    case type_audit_failure:
      return 0;
    default:
      return 4;
  }
}

std::uint64_t keywords_of(std::uint16_t type) {
  constexpr std::uint64_t classic = 0x80000000000000;
  if (type == type_audit_success) return classic | 0x20000000000000;
  if (type == type_audit_failure) return classic | 0x10000000000000;
  return classic;
}

template <typename T>
event_value made(const T& value, std::uint16_t type) {
  return {reinterpret_cast<const std::byte*>(&value), sizeof(T), type, 0};
}

event_value view_of(std::span<const std::byte> bytes, std::uint16_t type) {
  return {bytes.data(), static_cast<std::uint32_t>(bytes.size()), type, 0};
}

void element(template_writer& out, std::string_view name, std::uint16_t slot) {
  (void)out.open(name);
  out.slot(slot, false);
  out.close();
}

void element_with(template_writer& out, std::string_view name, std::string_view attribute,
                  std::uint16_t slot) {
  (void)out.open(name);
  out.attribute(attribute);
  out.slot(slot, true);
  out.close();
}

void write_system(template_writer& out) {
  (void)out.open("System");
  element_with(out, "Provider", "Name", slot_provider);
  (void)out.open("EventID");
  out.attribute("Qualifiers");
  out.slot(slot_qualifiers, true);
  out.end_start_tag();
  out.slot(slot_event_id, false);
  out.close();
  element(out, "Level", slot_level);
  element(out, "Task", slot_task);
  element(out, "Keywords", slot_keywords);
  element_with(out, "TimeCreated", "SystemTime", slot_time);
  element(out, "EventRecordID", slot_number_of_record);
  element(out, "Computer", slot_computer);
  element_with(out, "Security", "UserID", slot_user);
  out.close();
}

}  // namespace

const event_template& evt_event_reader::template_for(std::size_t strings, bool data) {
  auto& body = templates_[2 * strings + (data ? 1 : 0)];
  if (body) return *body;
  body = std::make_unique<event_template>();
  body->id = 2 * strings + (data ? 1 : 0) + 1;
  template_writer out(*body);
  (void)out.open("Event");
  out.attribute("xmlns");
  out.text("http://schemas.microsoft.com/win/2004/08/events/event");
  write_system(out);
  (void)out.open("EventData");
  for (std::size_t i = 0; i < strings; ++i) {
    element(out, "Data", static_cast<std::uint16_t>(first_string + i));
  }
  if (data) element(out, "Binary", slot_data);
  out.close_all();
  return *body;
}

void evt_event_reader::on_record(const evt_record& record) {
  made_ = {record.short_event_id(),
           static_cast<std::uint16_t>(record.event_id >> 16),
           level_of(record.event_type),
           record.event_category,
           keywords_of(record.event_type),
           record.time,
           record.record_num};
  slots_.clear();
  slots_.push_back(view_of(record.source_name, value_type::utf16));
  slots_.push_back(made(made_.event_id, value_type::uint16));
  slots_.push_back(made(made_.qualifiers, value_type::uint16));
  slots_.push_back(made(made_.level, value_type::uint8));
  slots_.push_back(made(made_.task, value_type::uint16));
  slots_.push_back(made(made_.keywords, value_type::hex64));
  slots_.push_back(record.time != 0 ? made(made_.time, value_type::filetime) : event_value{});
  slots_.push_back(made(made_.number, value_type::uint32));
  slots_.push_back(view_of(record.computer_name, value_type::utf16));
  slots_.push_back(record.sid.empty() ? event_value{} : view_of(record.sid, value_type::sid));
  slots_.push_back(record.data.empty() ? event_value{} : view_of(record.data, value_type::binary));
  for (const evt_text text : record.strings) slots_.push_back(view_of(text, value_type::utf16));

  if (shapes_.drop_if_full()) templates_.clear();
  event_instance instance;
  instance.body = &template_for(record.strings.size(), !record.data.empty());
  instance.slot_count = static_cast<std::uint32_t>(slots_.size());
  event_header header;
  header.record_number = record.record_num;
  header.written = qx::time(record.time_written, qx::type_time::unix_time).filetime();
  header.file_offset = base_offset_ + record.file_offset;
  header.flags = flags_;
  kinds_.assign((slots_.size() + 31) / 32, 0);
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    kinds_[i / 32] |= kind_bits(slots_[i].type) << 2 * (i % 32);
  }
  shapes_.trim();
  event_shape* shape = shapes_.find({&instance, 1}, kinds_);
  if (!shape) shape = &shapes_.add({&instance, 1}, slots_, kinds_);
  view_.assign(*shape, {&instance, 1}, slots_, header, *source_, readable_end_);
  sink_.on_event(view_);
}

}  // namespace zanvik
