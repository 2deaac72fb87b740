// Events as Windows writes them: a system part from the standard template, and an EventData or
// UserData part in its own nested template.
//
// In: an `event`, of which a test names only the fields it is about. Out: a record_builder. The
// template GUIDs depend on the shape of the event, so events of one shape share a template.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chunk_builder.h"

namespace zanvik::testing {

struct data_field {
  std::string name;
  slot_value value;
};

enum class payload_form {
  event_data,          // <EventData><Data Name="...">
  unnamed_event_data,  // <EventData><Data>; a datum named Binary becomes <Binary>
  user_data,           // <UserData><element><name>...
  none,                // the slot exists and is null
};

struct event {
  std::uint32_t event_id = 100;
  std::string provider{"Fabrikam-Test"};
  std::string provider_guid{};                // empty: no value for the attribute Guid
  std::optional<std::uint16_t> qualifiers{};  // nothing: the slot is null
  std::uint8_t version = 0;
  std::uint8_t level = 4;
  std::uint16_t task = 0;
  std::uint8_t opcode = 0;
  std::uint64_t keywords = 0x8000000000000000;
  std::optional<std::uint64_t> filetime{};  // nothing: 2024-01-15 08:00:00 plus `number` seconds
  std::string activity_id{};
  std::uint32_t process_id = 612;
  std::uint32_t thread_id = 4;
  std::string channel{"Application"};
  std::string computer{"FABRIKAM-WS01"};
  std::string user_sid{};
  payload_form form = payload_form::event_data;
  std::vector<data_field> data{};
  std::string user_data_element{"EventXML"};  // the element inside UserData
  bool classic = false;  // provider and channel are in the template, as in old sources
  instance_head nested_head = instance_head::with_fragment;
};

// A record of that event.
record_builder record(std::uint64_t number, event content);
// A small standard record: event 100 of Fabrikam-Test, one datum Text with "text of <number>".
record_builder record(std::uint64_t number);

// The time of a record whose event has none.
std::uint64_t default_filetime(std::uint64_t number);

// The parts of an event, for tests that build records by hand. The system template has 18 slots: 14
// is the provider's name, 16 the channel, 17 the nested part. For a classic event it has 20, and 19
// is the nested part.
template_definition system_template(const event& content);
std::vector<slot_value> system_slots(std::uint64_t number, const event& content);
template_definition payload_template(const event& content);

}  // namespace zanvik::testing
