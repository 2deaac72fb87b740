#include <string>
#include <utility>
#include <vector>

#include "samples_builder.h"

namespace zanvik::testing {

namespace {

std::uint64_t written_at(int minute) { return filetime(2024, 6, 3, 10, minute, 0, 1'234'567); }

event odd_event(std::uint32_t event_id, int minute) {
  return {.event_id = event_id,
          .provider = "Fabrikam-Odd",
          .provider_guid = "0dd00000-1111-2222-3333-444455556666",
          .filetime = written_at(minute),
          .channel = "Fabrikam-Odd/Operational"};
}

std::vector<data_field> one_of_each_type() {
  return {{"Null", slot::null(3)},
          {"Utf16", slot::utf16("text")},
          {"Utf16Nul", slot::utf16z("ends with a NUL")},
          {"Utf16Far", slot::utf16("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80")},  // past U+FFFF too
          {"Ansi", slot::ansi("narrow")},
          {"Int8", slot::int8(-2)},
          {"UInt8", slot::uint8(200)},
          {"Int16", slot::int16(-300)},
          {"UInt16", slot::uint16(65000)},
          {"Int32", slot::int32(-70000)},
          {"UInt32", slot::uint32(4'000'000'000)},
          {"Int64", slot::int64(-5'000'000'000)},
          {"UInt64", slot::uint64(~std::uint64_t{0})},
          {"Float", slot::float32(1.5f)},
          {"Double", slot::float64(-2.25)},
          {"BoolTrue", slot::boolean(true)},
          {"BoolHigh", slot::raw(13, bytes_of({0, 1, 0, 0}))},  // its first byte is 0
          {"Binary", slot::binary(bytes_of({0xde, 0xad, 0xbe, 0xef}))},
          {"BinaryText", slot::raw(14, slot::utf16("hidden").bytes)},
          {"Guid", slot::guid("6b29fc40-ca47-1067-b31d-00dd010662da")},
          {"Size32", slot::size32(77)},
          {"Size64", slot::size64(8'000'000'000)},
          {"FileTime", slot::filetime(filetime(2001, 2, 3, 4, 5, 6, 7))},
          {"FileTimeZero", slot::filetime(0)},
          {"SystemTime", slot::systemtime(2024, 2, 29, 23, 59, 58, 7, 4)},
          {"SidShort", slot::sid("S-1-5-18")},
          {"SidLong", slot::sid("S-1-5-21-1112223334-2223334445-3334445556-1104")},
          {"Hex32", slot::hex32(0xc000006d)},
          {"Hex64", slot::hex64(0x3e7)},
          {"Handle", slot::raw(32, bytes_of({0x10, 0, 0, 0}))},
          {"Xml", slot::raw(35, slot::utf16("<a/>").bytes)},
          {"Multi", slot::multi_utf16({"one", "two"})},
          {"Hex32Array", slot::raw(148, bytes_of({1, 0, 0, 0, 2, 0, 0, 0}))},
          {"Unknown", slot::raw(77, bytes_of({1, 2}))}};
}

std::vector<data_field> awkward_texts() {
  return {{"CrLf", slot::utf16("first\r\nsecond")},
          {"Lf", slot::utf16("first\nsecond")},
          {"Cr", slot::utf16("first\rsecond")},
          {"Tab", slot::utf16("a\tb")},
          {"Bar", slot::utf16("left|right")},
          {"Comma", slot::utf16("left,right")},
          {"Quote", slot::utf16("say \"yes\"")},
          {"Empty", slot::utf16("")},
          {"Blanks", slot::utf16("  in and out  ")},
          {"Percent", slot::utf16("%s%n%%1833")},
          {"OnlyLf", slot::utf16("\n")},
          {"Json", slot::utf16("{\"a\":1}")},
          {"Long", slot::utf16(std::string(700, 'x'))},
          {"Bell", slot::utf16("a\ab")}};
}

// <System> with literal values, as in a record without a template.
void plain_system(bxml_builder& xml, element_form form, const char* event_id, const char* time) {
  xml.open("System", form).close_start();
  xml.open_with_attributes("Provider", form).attribute("Name").value("Fabrikam-Plain");
  xml.close_empty();
  xml.open("EventID", form).close_start().value(event_id).end_element();
  xml.open("Level", form).close_start().value("3").end_element();
  xml.open_with_attributes("TimeCreated", form).attribute("SystemTime").value(time).close_empty();
  xml.open("Channel", form).close_start().value("Fabrikam-Odd/Operational").end_element();
  xml.open("Computer", form).close_start().value("FABRIKAM-WS07").end_element();
  xml.end_element();
}

void plain_event(bxml_builder& xml, element_form form, const char* event_id, const char* time,
                 const bxml_writer& payload) {
  xml.fragment_header().open("Event", form).close_start();
  plain_system(xml, form, event_id, time);
  payload(xml);
  xml.end_element().end_of_stream();
}

void named_data(bxml_builder& xml) {
  xml.open("EventData").close_start();
  xml.text_element("Data", "Name", "Action", "copied");
  xml.text_element("Data", "Name", "Object", "C:\\Users\\anna.berg\\plan, final.txt");
  xml.end_element();
}

// A text in pieces: references between values, each saying that more follows.
void joined_data(bxml_builder& xml) {
  xml.open("EventData").close_start();
  xml.open_with_attributes("Data").attribute("Name").value("Formula").close_start();
  xml.value("a ", true).entity_ref("lt", true).value(" b ", true).entity_ref("amp", true);
  xml.value(" c").end_element();
  xml.open_with_attributes("Data").attribute("Name").value("Break").close_start();
  xml.value("up", true).char_ref(10, true).value("down").end_element();
  xml.text_element("Data", "unnamed one").text_element("Data", "unnamed two");
  xml.end_element();
}

void binary_data(bxml_builder& xml) {
  xml.open("EventData", element_form::without_id).close_start();
  xml.open("Binary", element_form::without_id).close_start().value("0A0B0C").end_element();
  xml.end_element();
}

// Every name is in its own token, none in the chunk's tables.
void inline_named_event(bxml_builder& xml) {
  constexpr element_form form = element_form::inline_name;
  xml.fragment_header().open("Event", form).close_start().open("System", form).close_start();
  xml.open_with_attributes("Provider", form).inline_attribute("Name").value("Fabrikam-Inline");
  xml.close_empty();
  xml.open("EventID", form).close_start().value("709").end_element().end_element();
  xml.open("EventData", form).close_start();
  xml.open_with_attributes("Data", form).inline_attribute("Name").value("Note").close_start();
  xml.value("inline").end_element().end_element().end_element().end_of_stream();
}

// The nested slot has plain binary XML instead of a template instance.
record_builder plain_nested(std::uint64_t number) {
  event content = odd_event(711, 11);
  content.form = payload_form::user_data;
  std::vector<slot_value> slots = system_slots(number, content);
  slots.back() = slot::bxml([](bxml_builder& xml) {
    xml.fragment_header().open("Report").close_start();
    xml.text_element("Item", "first").text_element("Item", "second").end_element().end_of_stream();
  });
  return template_record(number, *content.filetime, system_template(content), std::move(slots));
}

record_builder with_data(std::uint64_t number, event content, std::vector<data_field> data) {
  content.data = std::move(data);
  return record(number, std::move(content));
}

record_builder user_data(std::uint64_t number, std::uint32_t event_id, instance_head head) {
  event content = odd_event(event_id, static_cast<int>(number));
  content.form = payload_form::user_data;
  content.user_data_element = "DeviceShared";
  content.nested_head = head;
  return with_data(number, std::move(content),
                   {{"DeviceName", slot::utf16("Label printer, 2nd floor")},
                    {"Port", slot::uint32(9100)},
                    {"Owner", slot::sid("S-1-5-18")}});
}

record_builder bare_nested(std::uint64_t number) {
  event content = odd_event(704, 4);
  content.nested_head = instance_head::bare;
  return with_data(number, std::move(content), {{"Head", slot::utf16("ten bytes")}});
}

chunk_builder first_chunk() {
  chunk_builder chunk;
  chunk.add(with_data(1, odd_event(701, 1), one_of_each_type()))
      .add(user_data(2, 702, instance_head::with_fragment))
      .add(user_data(3, 703, instance_head::bare))
      .add(bare_nested(4))
      .add(with_data(5, odd_event(705, 5), awkward_texts()))
      .add(plain_record(6, written_at(6),
                        [](bxml_builder& xml) {
                          plain_event(xml, element_form::with_id, "706",
                                      "2024-06-03T10:05:59.7654321Z", named_data);
                        }))
      .add(plain_record(7, written_at(7),
                        [](bxml_builder& xml) {
                          plain_event(xml, element_form::with_id, "707",
                                      "2024-06-03T10:06:58.0000000Z", joined_data);
                        }))
      .add(plain_record(8, written_at(8),
                        [](bxml_builder& xml) {
                          plain_event(xml, element_form::without_id, "708",
                                      "2024-06-03T10:07:57.5000000Z", binary_data);
                        }))
      .add(plain_record(9, written_at(9), inline_named_event))
      .add(with_data(9000, odd_event(710, 10), {{"Text", slot::utf16("number out of range")}}))
      .add(plain_nested(11));
  chunk.slack(with_data(2, odd_event(712, 0), {{"Text", slot::utf16("left behind in slack")}}));
  return chunk.declare(1, 11);
}

chunk_builder second_chunk() {
  event classic = odd_event(713, 12);
  classic.classic = true;
  classic.form = payload_form::unnamed_event_data;
  event empty = odd_event(714, 13);
  empty.form = payload_form::none;
  chunk_builder chunk;
  chunk
      .add(with_data(12, classic,
                     {{"", slot::utf16("one")},
                      {"", slot::utf16("two")},
                      {"Binary", slot::binary(bytes_of({1, 2, 3}))}}))
      .add(record(13, empty))
      .add(raw_record(14, written_at(14), bytes_of("no binary XML at all")));
  return chunk;
}

}  // namespace

log_builder odd_sample() { return log_builder().chunk(first_chunk()).chunk(second_chunk()); }

}  // namespace zanvik::testing
