// The token decoder over single streams in a chunk: the text it composes and the fields it finds.
#include "evtx/bxml/bxml_decoder.h"

#include <gtest/gtest.h>

#include "read_back.h"

namespace zanvik::testing {
namespace {

constexpr std::size_t stream_at = 0x200;

// The composed text, followed by "[name]=value " for each field.
std::string decode(const byte_vector& chunk, std::vector<slot_entry>* slots = nullptr,
                   std::uint64_t position = stream_at) {
  exact_buffer bytes(chunk);
  work_budget budget;
  bxml_memory memory;
  const chunk_view view{byte_cursor(bytes.span()), chunk.size(), 0, &budget, &memory};
  bxml_cursor cursor{view};
  cursor.position = position;
  cursor.slots = slots;
  cursor.budget = &budget.plain_bytes;
  field_map fields;
  std::string seen;
  decode_bxml(&seen, &fields, cursor);
  std::map<std::string, std::string> sorted;
  for (const auto& [name, value] : fields) sorted.emplace(name, value.text);
  for (const auto& [name, value] : sorted) seen += " [" + name + "]=" + value;
  return seen;
}

// A chunk with the stream, followed by zeros.
byte_vector chunk_with(const bxml_writer& stream) {
  byte_vector chunk(stream_at);
  chunk_tables tables;
  bxml_builder xml(chunk, tables);
  stream(xml);
  chunk.resize(chunk_bytes);
  return chunk;
}

// An open element with ID, whose name's entry is at `name`; any size will do.
byte_vector element_at_offset(std::uint32_t name, std::uint8_t token = 1) {
  byte_vector bytes;
  append_u8(bytes, token);
  append_u16(bytes, 0xffff);
  append_u32(bytes, 20);
  append_u32(bytes, name);
  return bytes;
}

byte_vector name_entry(std::string_view name) {  // without a NUL
  byte_vector bytes(6);
  append_u16(bytes, static_cast<std::uint16_t>(name.size()));
  append_utf16(bytes, name);
  return bytes;
}

struct stream_row {
  const char* reason;
  bxml_writer stream;
  std::string expected;
};

void check(const std::vector<stream_row>& rows) {
  for (const stream_row& row : rows) {
    EXPECT_EQ(decode(chunk_with(row.stream)), row.expected) << row.reason;
  }
}

TEST(decode_bxml, elements_and_names_in_all_layouts) {
  const std::string event_id = "\n<EventID>\"7\"</EventID> [EventID]=7";
  const auto simple = [](element_form form) {
    return [form](bxml_builder& x) {
      x.fragment_header().open("EventID", form).close_start().value("7").end_element();
      x.end_of_stream();
    };
  };
  const auto with_attribute = [](element_form form) {
    return [form](bxml_builder& x) {
      x.fragment_header().open_with_attributes("A", form).attribute("B").value("c");
      x.close_empty().end_of_stream();
    };
  };
  const std::string attribute = "\n<A B=\"c\"/> [A B]=c";
  check({
      {"with id", simple(element_form::with_id), event_id},
      {"without id", simple(element_form::without_id), event_id},
      {"name inline", simple(element_form::inline_name), event_id},
      {"with id and attribute", with_attribute(element_form::with_id), attribute},
      {"without id and attribute", with_attribute(element_form::without_id), attribute},
      {"name inline and attribute", with_attribute(element_form::inline_name), attribute},
      {"attribute with its name inline, which is at the end of all layouts",
       [](bxml_builder& x) {
         x.fragment_header().open_with_attributes("A").inline_attribute("Name").value("c");
         x.close_empty().end_of_stream();
       },
       "\n<A Name=\"c\"/> [A Name]=c"},
      {"a name used again is referred to",
       [](bxml_builder& x) {
         x.fragment_header().open("A").close_start().open("A").close_start().value("b");
         x.end_element().end_element().end_of_stream();
       },
       "\n<A>\n<A>\"b\"</A></A> [A]=b"},
      {"a name without its NUL",
       [](bxml_builder& x) {
         x.fragment_header().raw(element_at_offset(x.position() + 11)).raw(name_entry("Name"));
         x.raw(bytes_of({2})).value("v").raw(bytes_of({4, 0}));
       },
       "\n<Name>\"v\"</Name> [Name]=v"},
      {"an element without a name is no item",
       [](bxml_builder& x) {
         x.fragment_header().raw(element_at_offset(0xff00)).raw(bytes_of({2})).value("v");
         x.raw(bytes_of({4, 0}));
       },
       "\n<>\"v\"</...>"},
  });
}

TEST(decode_bxml, bounds_of_names_and_values) {
  // What precedes it is kept, whatever follows.
  const auto behind_a_field = [](byte_vector bytes) {
    return [bytes](bxml_builder& x) {
      x.fragment_header().text_element("Level", "4").raw(bytes);
      x.raw(bytes_of({2, 4})).text_element("Task", "1").end_of_stream();
    };
  };
  const std::string level = "\n<Level>\"4\"</Level>";
  const std::string rest = "></...>\n<Task>\"1\"</Task>";
  const std::string first = " [Level]=4", both = " [Level]=4 [Task]=1";
  const auto sized = [](std::uint32_t size) {
    byte_vector bytes = element_at_offset(0xff00);
    set_u32(bytes, 3, size);
    return bytes;
  };
  const auto value = [](std::uint16_t units) {
    byte_vector bytes = bytes_of({5, 1});
    append_u16(bytes, units);
    return bytes;
  };
  check({
      {"last offset a name entry may have", behind_a_field(element_at_offset(chunk_bytes - 10)),
       level + "\n<" + rest + both},
      {"one past it: no layout takes it", behind_a_field(element_at_offset(chunk_bytes - 9)),
       level + "\n<" + first},
      {"largest element size", behind_a_field(sized(chunk_bytes)), level + "\n<" + rest + both},
      {"one past it", behind_a_field(sized(chunk_bytes + 1)), level + "\n<" + first},
      {"an empty value is written and consumed, and is no item", behind_a_field(value(0)),
       level + "\"\"" + rest + both},
      {"a value that leads out of the block ends the stream", behind_a_field(value(0xffff)),
       level + "\"\"" + first},
  });
}

TEST(decode_bxml, references_chain_with_the_values_around_them) {
  const auto content = [](const bxml_writer& inside) {
    return [inside](bxml_builder& x) {
      x.fragment_header().open("Text").close_start();
      inside(x);
      x.end_element().end_of_stream();
    };
  };
  check({
      {"value, entity, value",
       content([](bxml_builder& x) { x.value("a", true).entity_ref("amp", true).value("b"); }),
       "\n<Text>\"a\"&amp;\"b\"</Text> [Text]=a&b"},
      {"entity with its name inline",
       content([](bxml_builder& x) { x.value("a").inline_entity_ref("lt", true).value("b"); }),
       "\n<Text>\"a\"&lt;\"b\"</Text> [Text]=a<b"},
      {"character reference, in decimal",
       content([](bxml_builder& x) { x.value("a").char_ref(0x20ac).value("b"); }),
       "\n<Text>\"a\"&#8364;\"b\"</Text> [Text]=a&#8364b"},
      {"an entity without the more-data flag does not chain what follows",
       content([](bxml_builder& x) { x.value("a").entity_ref("amp").value("b"); }),
       "\n<Text>\"a\"&amp;\"b\"</Text> [&amp;]=b [Text]=a"},
  });
}

TEST(decode_bxml, tokens_that_end_the_stream_leave_the_fields_before) {
  for (const int token : {7, 10, 11, 0x2c, 0x6c, 0x26, 0x21, 0x28, 0x29, 0x1f}) {
    const auto stream = [token](bxml_builder& x) {
      x.fragment_header().text_element("Level", "4");
      x.raw(bytes_of({token, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
      x.text_element("Task", "1").end_of_stream();
    };
    // An element is begun in the text before its layout is determined.
    const std::string begun = token == 0x21 ? "\n<" : "";
    EXPECT_EQ(decode(chunk_with(stream)), "\n<Level>\"4\"</Level>" + begun + " [Level]=4") << token;
  }
}

const template_definition one_value{
    "11111111-0000-0000-0000-000000000000", [](bxml_builder& x) {
      x.fragment_header().open("N").close_start().normal_sub(0, 1).end_element().end_of_stream();
    }};

TEST(decode_bxml, starts_of_streams) {
  const std::string plain = "\n<Level>\"4\"</Level> [Level]=4";
  const auto level = [](bxml_builder& x) { x.text_element("Level", "4").end_of_stream(); };
  const auto two = [level](bool header) {
    return [level, header](bxml_builder& x) {
      if (header) x.fragment_header();
      level(x);
      x.fragment_header().text_element("Task", "1").end_of_stream();
    };
  };
  check({
      {"behind an end of stream nothing is read", two(true), plain},
      {"without a fragment header the tokens start at once", two(false), plain},
      {"an instance, its definition, its values; the stream goes on behind them",
       [](bxml_builder& x) {
         x.template_instance(one_value, {slot::utf16("v")}).fragment_header();
         x.text_element("Level", "4").end_of_stream();
       },
       "\n<N>[0/1]</N>\n<Level>\"4\"</Level> [Level]=4"},
      {"among the values nested streams are decoded as well",
       [](bxml_builder& x) {
         const auto in = slot::bxml(
             [](bxml_builder& y) { y.fragment_header().open("In").close_empty().end_of_stream(); });
         x.template_instance(one_value, {slot::utf16("v"), slot::utf16("longer"), in});
       },
       "\n<N>[0/1]</N>\n<In/>"},
      {"what stands behind the event's data is no data of it",
       [](bxml_builder& x) {
         x.fragment_header().open("Event").close_start().open("EventData").close_start();
         x.text_element("Path", "p").end_element().text_element("Level", "4").end_element();
         x.end_of_stream();
       },
       "\n<Event>\n<EventData>\n<Path>\"p\"</Path></EventData>\n<Level>\"4\"</Level></Event>"
       " [01:Path]=p [Level]=4"},
      {"more than 96 values are refused",
       [](bxml_builder& x) {
         x.template_instance(one_value, std::vector<slot_value>(97)).fragment_header();
         x.text_element("Level", "4").end_of_stream();
       },
       "\n<N>[0/1]</N>... aborting, since number of entries = 61"},
      {"an instance whose definition is past the block is no instance",
       [](bxml_builder& x) {
         x.instance_head_only(instance_head::bare, 1, chunk_bytes + 1).raw(bytes_of({0, 0, 0, 0}));
         x.text_element("Level", "4").end_of_stream();
       },
       ""},
      {"an instance in the middle of a stream ends it",
       [](bxml_builder& x) {
         x.fragment_header().text_element("Level", "4");
         x.template_instance(one_value, {slot::utf16("v")}, instance_head::bare);
       },
       "\n<Level>\"4\"</Level> [Level]=4"},
  });
  EXPECT_EQ(decode(byte_vector(chunk_bytes), nullptr, chunk_bytes + 1), "");
}

TEST(decode_bxml, slots_are_named_after_what_stands_before_them) {
  const auto stream = [](bxml_builder& x) {
    x.fragment_header().open_with_attributes("Provider").attribute("Name").normal_sub(0, 1);
    x.close_empty().open_with_attributes("Security").attribute("UserID").optional_sub(1, 1);
    x.close_empty().open_with_attributes("Event").attribute("Id").normal_sub(2, 1).close_start();
    x.text_element("Level", "4");
    x.open("Channel").close_start().optional_sub(3, 1).end_element();
    x.open("Far").close_start().optional_sub(9, 1).end_element().end_element().end_of_stream();
  };
  byte_vector chunk = chunk_with(stream);
  append_u16(chunk, 'v');  // behind the chunk: the value of slot 3
  std::vector<slot_entry> slots(4);
  for (slot_entry& slot : slots) slot.type = value_type::utf16;
  slots[1].type = value_type::binary;
  slots[1].offset = stream_at;
  slots[1].size = 2;
  slots[3].offset = chunk_bytes;
  slots[3].size = 2;
  const std::string seen = decode(chunk, &slots);
  const std::vector<std::string> expected{"Provider Name", "Security UserID", "Id", "Channel"};
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i].name, expected[i]);
  EXPECT_EQ(seen,
            "\n<Provider Name=\"\"/>\n<Security UserID=\"0f 01\"/>\n<Event Id=\"\">"
            "\n<Level>\"4\"</Level>\n<Channel>v</Channel>\n<Far>[9/1]</Far></Event> [Level]=4");
}

TEST(decode_bxml, nesting_ends_at_its_limit) {
  const auto nested = [](int levels) {
    bxml_writer inside = [](bxml_builder& x) {
      x.fragment_header().open("X").close_empty().end_of_stream();
    };
    for (int i = 0; i < levels; ++i) {
      inside = [inside](bxml_builder& x) {
        x.instance_head_only(instance_head::with_fragment, 1, 0).slot_table({slot::bxml(inside)});
      };
    }
    return decode(chunk_with(inside));
  };
  EXPECT_EQ(nested(10), "\n<X/>");
  EXPECT_EQ(nested(200), "");
}

// A record with a template whose body has no system part takes it from the values' order.
TEST(decode_bxml, system_fields_come_from_the_standard_order_of_slots) {
  const std::string body = "\n<N>[0/1]</N>";
  const auto stream = [](bxml_builder& x) {
    x.template_instance(
        one_value,
        {slot::uint8(4), slot::uint8(2), slot::uint16(7), slot::uint16(4624), slot::uint16(1),
         slot::hex64(0x8000000000000001), slot::filetime(filetime(2024, 1, 2)),
         slot::guid("6b29fc40-ca47-1067-b31d-00dd010662da"), slot::uint32(8), slot::uint32(9),
         slot::uint64(10)});
  };
  const std::string all =
      " [Correlation ActivityID]=6b29fc40-ca47-1067-b31d-00dd010662da [EventID]=4624"
      " [EventID Qualifiers]=1 [EventRecordID]=10 [Execution Process ID]=8 [Execution Thread ID]=9"
      " [Keywords]=9223372036854775809 [Level]=4 [Opcode]=2 [Task]=7"
      " [TimeCreated SystemTime]=2024-01-02 00:00:00.000000000";
  EXPECT_EQ(decode(chunk_with(stream)), body + all);
  const auto shifted = [](bxml_builder& x) {  // no opcode, no qualifiers, no activity
    x.template_instance(one_value,
                        {slot::uint8(4), slot::uint16(7), slot::uint16(4624), slot::hex64(1),
                         slot::uint32(8), slot::uint32(9), slot::uint64(10), slot::utf16("")});
  };
  EXPECT_EQ(decode(chunk_with(shifted)),
            body +
                " [EventID]=4624 [EventRecordID]=10 [Execution Process ID]=8"
                " [Execution Thread ID]=9 [Keywords]=1 [Level]=4 [Task]=7");
  const auto too_few = [](bxml_builder& x) {
    x.template_instance(one_value, std::vector<slot_value>(7, slot::uint8(4)));
  };
  EXPECT_EQ(decode(chunk_with(too_few)), body);
}

}  // namespace
}  // namespace zanvik::testing
