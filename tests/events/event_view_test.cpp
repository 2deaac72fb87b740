// The view: fields by name, by position and as System members, shapes that events share, and the
// result for events that are damaged or crafted to be slow or large.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "exported_events.h"

namespace zanvik::testing {
namespace {

class calling_sink : public event_sink {
 public:
  explicit calling_sink(std::function<void(const event_view&)> use) : use_(std::move(use)) {}
  void on_event(const event_view& event) override { use_(event); }

 private:
  std::function<void(const event_view&)> use_;
};

std::size_t for_each_event(std::span<const std::byte> log,
                           const std::function<void(const event_view&)>& use) {
  std::size_t events = 0;
  calling_sink sink([&](const event_view& event) {
    ++events;
    use(event);
  });
  own_bytes bytes(log);
  evtx_event_reader reader(sink);
  const log_source source{"x", "", log_kind::evtx};
  reader.set_source(source);
  walk_evtx_block(bytes.span(), 0, reader, {});
  return events;
}

// Records of one kind without a template differ in their texts alone. A log that makes a structure
// for each record fills what is kept of them, and its events come out all the same.
TEST(event_view, fragments_share_a_shape_by_their_structure) {
  const auto event = [](std::uint64_t number, std::string provider, std::string value,
                        std::string name) {
    return plain_record(number, default_filetime(number), [=](bxml_builder& b) {
      b.fragment_header().open("Event").close_start().open("System").close_start();
      b.open_with_attributes("Provider").attribute("Name").value(provider).close_empty();
      b.end_element().open("EventData").close_start();
      b.open_with_attributes("Data").attribute("Name").value(name).close_start();
      b.value(value).entity_ref("lt").value("c").end_element();
      b.end_element().end_element().end_of_stream();
    });
  };
  std::set<std::uint64_t> ids;
  std::string seen;
  const auto use = [&](const event_view& view) {
    std::string scratch;
    ids.insert(view.shape_id());
    seen += view.text(system_member::provider_name, scratch);
    seen += ":" + std::string(view.text(view.shape().find_datum("A"), scratch)) + " ";
  };
  for_each_event(
      log_builder().chunk({event(1, "P", "x", "A"), event(2, "Q", "longer", "A")}).bytes(), use);
  EXPECT_EQ(seen, "P:x<c Q:longer<c ");
  EXPECT_EQ(ids.size(), 1u);

  seen.clear();
  log_builder many;
  for (unsigned chunk = 0; chunk < 6; ++chunk) {
    chunk_builder records;
    for (unsigned i = 0; i < 60; ++i) {
      records.add(event(i, "P", "x", "A" + std::to_string(60 * chunk + i)));
    }
    many.chunk(records);
  }
  std::size_t named = 0;
  for_each_event(many.bytes(), [&](const event_view& view) {
    std::string scratch;
    const std::string name = "A" + std::to_string(named++);
    EXPECT_EQ(view.text(view.shape().find_datum(name), scratch), "x<c") << name;
  });
  EXPECT_EQ(named, 360u);
}

TEST(event_view, fields_by_name_place_and_member) {
  const log_builder log = log_builder().chunk({record(
      7, {.event_id = 4624,
          .channel = "Security",
          .user_sid = "S-1-5-18",
          .data = {{"TargetUserName", slot::utf16("alice")}, {"Count", slot::uint32(5)}}})});
  std::string scratch;
  EXPECT_EQ(for_each_event(
                log.bytes(),
                [&](const event_view& event) {
                  const event_shape& shape = event.shape();
                  EXPECT_EQ(event.text(system_member::channel, scratch), "Security");
                  EXPECT_EQ(event.text(system_member::user_id, scratch), "S-1-5-18");
                  EXPECT_EQ(event.value(system_member::activity_id).type, value_type::null);
                  std::uint64_t id = 0;
                  EXPECT_TRUE(event.number(system_member::event_id, id));
                  EXPECT_EQ(id, 4624u);
                  EXPECT_EQ(event.time(), default_filetime(7));
                  EXPECT_EQ(event.text(shape.find_datum("targetusername"), scratch), "alice");
                  EXPECT_EQ(shape.datum_at(1), shape.find_datum("Count"));
                  EXPECT_EQ(event.value(static_cast<std::uint32_t>(shape.datum_at(1))).type,
                            value_type::uint32);
                  EXPECT_EQ(shape.find_datum("nothing"), -1);
                  EXPECT_EQ(event.text(-1, scratch), "");
                  for (const char* name : {"EventID", "eventid", "System/EventID", "Provider_Name",
                                           "TargetUserName", "EventData/Data"}) {
                    EXPECT_FALSE(shape.find_all(name).empty()) << name;
                  }
                }),
            1u);
}

TEST(event_view, ansi_texts_are_of_code_page_1252) {
  const std::string_view bytes = "\x7e\x7f\x80\x81\x9f\xa0\xff";
  std::string text;
  append_text(text, {reinterpret_cast<const std::byte*>(bytes.data()),
                     static_cast<std::uint32_t>(bytes.size()), value_type::ansi, 0});
  EXPECT_EQ(text, "\x7e\x7f\u20ac\xc2\x81\u0178\u00a0\u00ff");
}

TEST(event_view, events_of_a_kind_share_a_shape) {
  chunk_builder one, two;
  for (int i = 1; i <= 3; ++i) one.add(record(static_cast<std::uint64_t>(i)));
  two.add(record(4)).add(record(5, {.user_sid = "S-1-5-18"}));
  std::vector<std::uint64_t> ids;
  for_each_event(log_builder().chunk(one).chunk(two).bytes(),
                 [&](const event_view& event) { ids.push_back(event.shape().id); });
  ASSERT_EQ(ids.size(), 5u);
  EXPECT_EQ(std::set(ids.begin(), ids.begin() + 4).size(), 1u) << "across chunks too";
  EXPECT_NE(ids[3], ids[4]) << "an attribute more is another shape";
}

TEST(event_view, without_its_template_an_event_has_its_values) {
  log_builder log = log_builder().chunk({record(1), record(2)});
  // The second record's definitions are in the first; its ID is changed to lead elsewhere.
  log.poke_u32(log.content_offset(0, 1) + 10, 60000);
  std::size_t damaged = 0;
  for_each_event(log.bytes(), [&](const event_view& event) {
    if (!(event.header().flags & event_no_template)) return;
    ++damaged;
    std::string scratch, all;
    for (std::size_t i = 0; i < event.shape().fields.size(); ++i) {
      all += std::string(event.text(static_cast<std::int32_t>(i), scratch)) + "|";
    }
    EXPECT_NE(all.find("Fabrikam-Test|"), std::string::npos) << all;
    EXPECT_NE(all.find("text of 2|"), std::string::npos) << all;
  });
  EXPECT_EQ(damaged, 1u);
}

TEST(event_view, a_value_that_leads_out_of_its_chunk_is_cut) {
  log_builder log = log_builder().chunk({record(1)});
  const std::size_t table = log.content_offset(0, 0) + 14 + 24;
  const auto body = get_u32(log.bytes(), table - 4);
  log.poke_u16(table + body + 4 + 4 * 14, 0xffff);  // the provider's name
  for_each_event(log.bytes(),
                 [](const event_view& event) { EXPECT_TRUE(event.header().flags & event_cut); });
}

// One slot of 60,000 bytes that a template uses thousands of times, in each of many records.
TEST(event_view, a_slot_shown_over_and_over_is_paid_for) {
  const template_definition definition{"0a0b0c0d-0000-0000-0000-000000000003", [](bxml_builder& b) {
                                         b.fragment_header().open("Event").close_start();
                                         for (int i = 0; i < 4000; ++i) b.normal_sub(0, 1);
                                         b.end_element().end_of_stream();
                                       }};
  chunk_builder chunk;
  chunk.add(
      template_record(1, default_filetime(1), definition, {slot::utf16(std::string(10000, 'x'))}));
  const std::string json = exported(log_builder().chunk(chunk), "jsonl");
  EXPECT_LT(json.size(), 9u << 20);
  EXPECT_NE(json.find("\"cut\":true"), std::string::npos);
}

TEST(event_view, nesting_ends) {
  std::function<void(bxml_builder&, int)> nest = [&](bxml_builder& b, int left) {
    const template_definition definition{
        "0a0b0c0d-0000-0000-0000-0000000000" + std::to_string(10 + left), [](bxml_builder& body) {
          body.fragment_header().open("Level").close_start().normal_sub(0, 33).end_element();
          body.end_of_stream();
        }};
    b.template_instance(
        definition, {left == 0 ? slot::utf16("deep") : slot::bxml([&, left](bxml_builder& inner) {
          nest(inner, left - 1);
        })});
  };
  for (const int depth : {5, 60}) {
    const log_builder log = log_builder().chunk(
        {plain_record(1, default_filetime(1), [&](bxml_builder& b) { nest(b, depth); })});
    const std::string json = exported(log, "jsonl");
    EXPECT_EQ(json.find("\"deep\"") != std::string::npos, depth == 5) << depth;
    EXPECT_EQ(json.find("\"cut\":true") != std::string::npos, depth != 5) << depth;
  }
}

TEST(event_view, truncated_logs_give_what_is_there) {
  const log_builder log = log_builder().chunk({record(1)}).chunk({record(2)});
  const auto bytes = std::span(log.bytes());
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{7}, std::size_t{4096}, bytes.size() - 1, bytes.size()}) {
    const std::size_t events = for_each_event(bytes.first(size), [](const event_view&) {});
    EXPECT_EQ(events, size == bytes.size() ? 2u : size == bytes.size() - 1 ? 1u : 0u) << size;
  }
}

}  // namespace
}  // namespace zanvik::testing
