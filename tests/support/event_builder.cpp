#include "event_builder.h"

#include <array>
#include <utility>

namespace zanvik::testing {

namespace {

constexpr std::string_view event_namespace =
    "http://schemas.microsoft.com/win/2004/08/events/event";
constexpr std::uint8_t type_text = 1, type_u8 = 4, type_u16 = 6, type_u32 = 8, type_u64 = 10,
                       type_guid = 15, type_filetime = 17, type_sid = 19, type_hex64 = 21,
                       type_bxml = 33;
constexpr std::uint16_t nested_slot = 17, classic_nested_slot = 19;

// A GUID that depends on `shape` alone, so events of one shape share a template.
std::string guid_of_shape(std::string_view shape) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string guid;
  std::uint64_t hash = 0xcbf29ce484222325;
  for (int part = 0; part < 4; ++part) {
    for (const char c : shape) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    for (int digit = 0; digit < 8; ++digit) guid.push_back(digits[hash >> (4 * digit) & 0xf]);
  }
  guid[0] = 'f';  // a template id is never 0
  for (const std::size_t dash : {20u, 16u, 12u, 8u}) guid.insert(dash, 1, '-');
  return guid;
}

// <name>substitution</name>, the element there only when the slot has a value.
void optional_element(bxml_builder& xml, std::string_view name, std::uint16_t slot,
                      std::uint8_t type) {
  xml.open(name, element_form::with_id, slot).close_start();
  xml.optional_sub(slot, type).end_element();
}

void write_provider(bxml_builder& xml, const event& content) {
  xml.open_with_attributes("Provider").attribute("Name");
  if (content.classic) {
    xml.value(content.provider);
  } else {
    xml.optional_sub(14, type_text).attribute("Guid").optional_sub(15, type_guid);
  }
  xml.close_empty();
}

void write_event_id(bxml_builder& xml) {
  xml.open_with_attributes("EventID", element_form::with_id, 3).attribute("Qualifiers");
  xml.optional_sub(4, type_u16).close_start().optional_sub(3, type_u16).end_element();
}

void write_correlation_and_execution(bxml_builder& xml) {
  xml.open_with_attributes("Correlation").attribute("ActivityID").optional_sub(7, type_guid);
  xml.attribute("RelatedActivityID").optional_sub(13, type_guid).close_empty();
  xml.open_with_attributes("Execution").attribute("ProcessID").optional_sub(8, type_u32);
  xml.attribute("ThreadID").optional_sub(9, type_u32).close_empty();
}

void write_channel(bxml_builder& xml, const event& content) {
  if (content.classic) {
    xml.text_element("Channel", content.channel);
  } else {
    optional_element(xml, "Channel", 16, type_text);
  }
}

void write_system(bxml_builder& xml, const event& content) {
  xml.open("System").close_start();
  write_provider(xml, content);
  write_event_id(xml);
  if (!content.classic) optional_element(xml, "Version", 11, type_u8);
  optional_element(xml, "Level", 0, type_u8);
  optional_element(xml, "Task", 2, type_u16);
  if (!content.classic) optional_element(xml, "Opcode", 1, type_u8);
  optional_element(xml, "Keywords", 5, type_hex64);
  xml.open_with_attributes("TimeCreated").attribute("SystemTime");
  xml.optional_sub(6, type_filetime).close_empty();
  optional_element(xml, "EventRecordID", 10, type_u64);
  if (!content.classic) write_correlation_and_execution(xml);
  write_channel(xml, content);
  xml.text_element("Computer", content.computer);
  xml.open_with_attributes("Security").attribute("UserID").optional_sub(12, type_sid).close_empty();
  xml.end_element();
}

// The whole system template: with UserData its element stands here, EventData comes nested.
void write_event(bxml_builder& xml, const event& content) {
  const std::uint16_t nested = content.classic ? classic_nested_slot : nested_slot;
  const bool user_data = content.form == payload_form::user_data;
  xml.fragment_header();
  xml.open_with_attributes("Event", element_form::with_id, user_data ? 0xffff : nested);
  xml.attribute("xmlns").value(event_namespace).close_start();
  write_system(xml, content);
  if (user_data) {
    optional_element(xml, "UserData", nested, type_bxml);
  } else {
    xml.optional_sub(nested, type_bxml);
  }
  xml.end_element().end_of_stream();
}

void write_user_data(bxml_builder& xml, const event& content) {
  xml.fragment_header();
  xml.open_with_attributes(content.user_data_element).attribute("xmlns");
  xml.value("http://schemas.fabrikam.example/events").close_start();
  for (std::uint16_t i = 0; i < content.data.size(); ++i) {
    xml.open(content.data[i].name).close_start();
    xml.normal_sub(i, static_cast<std::uint8_t>(content.data[i].value.type)).end_element();
  }
  xml.end_element().end_of_stream();
}

void write_event_data(bxml_builder& xml, const event& content) {
  xml.fragment_header().open("EventData").close_start();
  for (std::uint16_t i = 0; i < content.data.size(); ++i) {
    const auto type = static_cast<std::uint8_t>(content.data[i].value.type);
    if (content.form == payload_form::unnamed_event_data) {
      optional_element(xml, content.data[i].name == "Binary" ? "Binary" : "Data", i, type);
    } else {
      xml.open_with_attributes("Data").attribute("Name").value(content.data[i].name);
      xml.close_start().normal_sub(i, type).end_element();
    }
  }
  xml.end_element().end_of_stream();
}

slot_value optional_guid(const std::string& text) {
  return text.empty() ? slot::null() : slot::guid(text);
}

slot_value nested_value(const event& content) {
  if (content.form == payload_form::none) return slot::null();
  std::vector<slot_value> slots;
  for (const data_field& field : content.data) slots.push_back(field.value);
  return slot::bxml([definition = payload_template(content), slots = std::move(slots),
                     head = content.nested_head](bxml_builder& xml) {
    xml.template_instance(definition, slots, head);
  });
}

}  // namespace

std::uint64_t default_filetime(std::uint64_t number) {
  return filetime(2024, 1, 15, 8) + number * 10'000'000;
}

template_definition system_template(const event& content) {
  std::string shape = "system|" + content.computer;
  shape += content.form == payload_form::user_data ? "|user data" : "";
  if (content.classic) shape += "|" + content.provider + "|" + content.channel;
  return {.guid = guid_of_shape(shape),
          .body = [content](bxml_builder& xml) { write_event(xml, content); }};
}

std::vector<slot_value> system_slots(std::uint64_t number, const event& content) {
  std::vector<slot_value> slots;
  slots.push_back(slot::uint8(content.level));
  slots.push_back(slot::uint8(content.opcode));
  slots.push_back(slot::uint16(content.task));
  slots.push_back(slot::uint16(static_cast<std::uint16_t>(content.event_id)));
  slots.push_back(content.qualifiers ? slot::uint16(*content.qualifiers) : slot::null());
  slots.push_back(slot::hex64(content.keywords));
  slots.push_back(slot::filetime(content.filetime.value_or(default_filetime(number))));
  slots.push_back(optional_guid(content.activity_id));
  slots.push_back(slot::uint32(content.process_id));
  slots.push_back(slot::uint32(content.thread_id));
  slots.push_back(slot::uint64(number));
  slots.push_back(slot::uint8(content.version));
  slots.push_back(content.user_sid.empty() ? slot::null() : slot::sid(content.user_sid));
  slots.push_back(slot::null());  // the related activity
  if (content.classic) {
    for (int unused = 0; unused < 5; ++unused) slots.push_back(slot::null());
  } else {
    slots.push_back(slot::utf16(content.provider));
    slots.push_back(optional_guid(content.provider_guid));
    slots.push_back(slot::utf16(content.channel));
  }
  slots.push_back(nested_value(content));
  return slots;
}

template_definition payload_template(const event& content) {
  std::string shape = "payload|" + std::to_string(static_cast<int>(content.form));
  if (content.form == payload_form::user_data) shape += "|" + content.user_data_element;
  for (const data_field& field : content.data) {
    shape += "|" + field.name + ":" + std::to_string(field.value.type);
  }
  return {.guid = guid_of_shape(shape), .body = [content](bxml_builder& xml) {
            if (content.form == payload_form::user_data) {
              write_user_data(xml, content);
            } else {
              write_event_data(xml, content);
            }
          }};
}

record_builder record(std::uint64_t number, event content) {
  const std::uint64_t written = content.filetime.value_or(default_filetime(number));
  return template_record(number, written, system_template(content), system_slots(number, content));
}

record_builder record(std::uint64_t number) {
  return record(number, {.data = {{"Text", slot::utf16("text of " + std::to_string(number))}}});
}

}  // namespace zanvik::testing
