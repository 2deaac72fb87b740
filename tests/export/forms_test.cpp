// The output of each form for events: values of all types, odd names, hostile text.
#include <gtest/gtest.h>

#include "evt_builder.h"
#include "export/escaped_text.h"
#include "exported_events.h"

namespace zanvik::testing {
namespace {

std::string json_of(event content) {
  return exported(log_builder().chunk({record(7, std::move(content))}), "jsonl");
}

// The text after `mark` up to `end`.
std::string part(const std::string& text, std::string_view mark, std::string_view end) {
  const std::size_t at = text.find(mark);
  if (at == std::string::npos) return "no " + std::string(mark) + " in " + text;
  return text.substr(at + mark.size(), text.find(end, at) - at - mark.size());
}

struct value_row {
  slot_value value;
  std::string json;
  std::string xml;
  const char* reason;
};

TEST(forms, values_keep_their_type) {
  const value_row rows[] = {
      {slot::null(), "null", "<Data Name=\"V\"/>", "absent"},
      {slot::utf16(""), "\"\"", "<Data Name=\"V\"/>", "empty is not absent"},
      {slot::utf16z("a"), "\"a\"", ">a<", "the zero at the end is no character"},
      {slot::utf16("a\r\n<\"&\\>"), R"("a\r\n<\"&\\>")", ">a&#13;\n&lt;\"&amp;\\&gt;<", "escapes"},
      {slot::utf16("\xf0\x9f\x98\x80 \xc3\xa4"), "\"\xf0\x9f\x98\x80 \xc3\xa4\"",
       ">\xf0\x9f\x98\x80 \xc3\xa4<", "a pair of surrogates"},
      {slot::raw(1, bytes_of({0x3d, 0xd8, 'x', 0})), "\"\xef\xbf\xbdx\"", ">\xef\xbf\xbdx<",
       "a surrogate alone"},
      {slot::raw(1, bytes_of({1, 0, 0, 0, 'x', 0})), "\"\\u0001\\u0000x\"",
       ">\xef\xbf\xbd\xef\xbf\xbdx<", "controls, which XML cannot hold"},
      {slot::ansi("\x80z"), "\"\xe2\x82\xacz\"", ">\xe2\x82\xacz<", "code page 1252"},
      {slot::int8(-5), "-5", ">-5<", "signed bytes are signed"},
      {slot::uint64(~0ull), "18446744073709551615", ">18446744073709551615<", "all bits"},
      {slot::int64(INT64_MIN), "-9223372036854775808", ">-9223372036854775808<", "the least"},
      {slot::raw(8, bytes_of({1, 2, 3})), "\"010203\"", ">010203<", "a size that no number has"},
      {slot::float64(0.1), "0.1", ">0.1<", "as many digits as bring it back"},
      {slot::raw(12, bytes_of({0, 0, 0, 0, 0, 0, 0xf0, 0x7f})), "\"inf\"", ">inf<", "no number"},
      {slot::boolean(true), "true", ">true<", ""},
      {slot::binary(bytes_of({0xab, 0x0c})), "\"AB0C\"", ">AB0C<", "without blanks"},
      {slot::guid("94f748d5-4a45-5a42-0000-0010d265f20f"),
       "\"{94F748D5-4A45-5A42-0000-0010D265F20F}\"", ">{94F748D5-4A45-5A42-0000-0010D265F20F}<",
       "upper case, braces"},
      {slot::filetime(131587674291368792), "\"2017-12-26T13:10:29.1368792Z\"",
       ">2017-12-26T13:10:29.1368792Z<", "seven digits"},
      {slot::filetime(0), "\"1601-01-01T00:00:00.0000000Z\"", ">1601-01-01T00:00:00.0000000Z<",
       "the first tick"},
      {slot::filetime(~0ull), "\"18446744073709551615\"", ">18446744073709551615<",
       "beyond the year 9999"},
      {slot::systemtime(2024, 2, 29, 23, 59, 58, 7), "\"2024-02-29T23:59:58.0070000Z\"",
       ">2024-02-29T23:59:58.0070000Z<", ""},
      {slot::sid("S-1-5-21-1-2-4294967295-1001"), "\"S-1-5-21-1-2-4294967295-1001\"",
       ">S-1-5-21-1-2-4294967295-1001<", "whole"},
      {slot::raw(19, bytes_of({1, 9, 0, 0, 0, 0, 0, 5, 1, 0, 0, 0})),
       "\"010900000000000501000000\"", ">010900000000000501000000<", "a SID that is not all there"},
      {slot::hex32(0x3e7), "\"0x3e7\"", ">0x3e7<", "no zeros in front"},
      {slot::hex64(0), "\"0x0\"", ">0x0<", ""},
      {slot::multi_utf16({"a", "", "b"}), R"(["a","","b"])",
       "<Data Name=\"V\">a</Data><Data Name=\"V\"/><Data Name=\"V\">b</Data>",
       "an element for each item"},
      {slot::raw(0x86, bytes_of({1, 0, 2, 0})), "[1,2]",
       "<Data Name=\"V\">1</Data><Data Name=\"V\">2</Data>", "an array of numbers"},
      {slot::multi_utf16({}), "[]", "<Data Name=\"V\"/>", "an array of nothing"},
  };
  for (const value_row& row : rows) {
    const log_builder log =
        log_builder().chunk({record(7, {.data = {{"V", row.value}, {"W", slot::uint8(1)}}})});
    EXPECT_EQ(part(exported(log, "jsonl"), "\"V\":", ",\"W\""), row.json) << row.reason;
    EXPECT_NE(exported(log, "xml").find(row.xml), std::string::npos) << row.reason << "\n"
                                                                     << exported(log, "xml");
  }
}

TEST(forms, json_says_what_it_could_not_hold) {
  const auto lossy = [](slot_value value) {
    return json_of({.data = {{"V", std::move(value)}}}).find("\"lossy\":true") != std::string::npos;
  };
  EXPECT_TRUE(lossy(slot::raw(1, bytes_of({0x00, 0xdc}))));
  EXPECT_FALSE(lossy(slot::raw(1, bytes_of({1, 0}))));
}

// In CSV like a datum, the last one; in Timesketch also for what its XML alone cannot hold.
TEST(forms, all_forms_say_what_they_could_not_hold) {
  const auto with = [](slot_value value, std::string_view form) {
    return exported(log_builder().chunk({record(7, {.data = {{"V", std::move(value)}}})}), form);
  };
  const slot_value surrogate = slot::raw(1, bytes_of({0x00, 0xdc}));
  const slot_value control = slot::raw(1, bytes_of({1, 0}));
  EXPECT_TRUE(with(surrogate, "csv").ends_with(",\"V: \xef\xbf\xbd; zanvik: lossy\"\n"));
  EXPECT_TRUE(with(control, "csv").ends_with(",\"V: \x01\"\n")) << with(control, "csv");
  EXPECT_TRUE(with(control, "timesketch").ends_with(",\"lossy\":true}\n"));
  EXPECT_EQ(with(slot::utf16("x"), "timesketch").find("lossy"), std::string::npos);
  EXPECT_TRUE(with(surrogate, "elastic").ends_with(",\"lossy\":true}}\n"));
  EXPECT_NE(with(control, "xml").find("<?zanvik lossy=\"true\"?>"), std::string::npos);
}

// Texts of every length around the blocks in which they are copied, with a character to escape at
// each position, at the very end of memory.
TEST(forms, text_of_any_length) {
  for (std::size_t length = 0; length < 70; ++length) {
    for (std::size_t mark = 0; mark <= length; ++mark) {
      byte_vector text;
      std::string expected;
      for (std::size_t i = 0; i < length; ++i) {
        append_u16(text, static_cast<std::uint16_t>(i == mark ? 0x8000 + i : 'a' + i % 26));
        if (i == mark) {
          expected += '\xe8';
          expected += static_cast<char>(0x80 | (i >> 6));
          expected += static_cast<char>(0x80 | (i & 63));
        } else {
          expected += static_cast<char>('a' + i % 26);
        }
      }
      own_bytes bytes(text);
      std::string out(escaped_bound(text.size()), '\0');
      bool lossy = false;
      const char* end = write_escaped_utf16<escape_form::json>(
          out.data(), bytes.span(), bytes.span().data() + bytes.span().size(), lossy);
      EXPECT_EQ(out.substr(0, static_cast<std::size_t>(end - out.data())), expected);
    }
  }
}

template <escape_form form>
std::string escaped(const std::string& text, int encoding) {
  byte_vector bytes;
  for (const char c : text) {
    if (encoding == 0) append_u16(bytes, static_cast<std::uint8_t>(c));
    if (encoding == 1) bytes.push_back(static_cast<std::byte>(c));
  }
  std::string out(escaped_bound(2 * text.size()), '\0');
  bool lossy = false;
  const char* end = nullptr;
  if (encoding == 0) {
    own_bytes own(bytes);
    const auto span = own.span();
    end = write_escaped_utf16<form>(out.data(), span, span.data() + span.size(), lossy);
  } else if (encoding == 1) {
    end = write_escaped_ansi<form>(out.data(), bytes, lossy);
  } else {
    end = write_escaped_utf8<form>(out.data(), text, lossy);
  }
  return out.substr(0, static_cast<std::size_t>(end - out.data())) + (lossy ? "!" : "");
}

// A character is the same wherever it stands, and from whichever encoding it comes.
template <escape_form form>
void expect_characters_alone() {
  std::vector<std::string> alone;
  for (int c = 0; c < 0x80; ++c) alone.push_back(escaped<form>({static_cast<char>(c)}, 2));
  unsigned next = 0;
  for (std::size_t length = 0; length < 200; ++length) {
    std::string text = std::string(length % 40, 'a'), expected = text;
    bool lossy = false;
    for (std::size_t i = 0; i < length % 40; i += 1 + length % 9) {
      text.insert(text.begin() + static_cast<std::ptrdiff_t>(i), static_cast<char>(next++ % 0x80));
    }
    expected.clear();
    for (const char c : text) {
      std::string one = alone[static_cast<std::size_t>(c)];
      if (one.size() > 1 && one.ends_with('!')) {
        lossy = true;
        one.pop_back();
      }
      expected += one;
    }
    if (lossy) expected += '!';
    for (const int encoding : {0, 1, 2}) {
      EXPECT_EQ(escaped<form>(text, encoding), expected) << length << ' ' << encoding;
    }
  }
}

TEST(forms, characters_of_all_encodings) {
  expect_characters_alone<escape_form::json>();
  expect_characters_alone<escape_form::json_line>();
  expect_characters_alone<escape_form::xml_text>();
  expect_characters_alone<escape_form::xml_attribute>();
  expect_characters_alone<escape_form::csv>();
  EXPECT_EQ(escaped<escape_form::json>("\b\f\x1f\x7f", 0), "\\b\\f\\u001f\x7f");
  EXPECT_EQ(escaped<escape_form::json_line>("a\n\"", 1), "a \\\"");
  EXPECT_EQ(escaped<escape_form::xml_attribute>("\t'\"\n", 0), "&#9;'&quot;&#10;");
  EXPECT_EQ(escaped<escape_form::xml_text>("\t'\"\n\x0e", 2), "\t'\"\n\xef\xbf\xbd!");
  EXPECT_EQ(escaped<escape_form::csv>({"a\"\0", 3}, 1), "a\"\"\xef\xbf\xbd!");
}

// More steps than there is room for at once, and long values between short ones.
TEST(forms, long_events_are_whole) {
  std::vector<data_field> data;
  std::string expected = "<EventData>";
  for (unsigned i = 0; i < 300; ++i) {
    const std::string name = "N" + std::to_string(i);
    const std::string text(i % 70 == 1 ? 1500 : i % 40, static_cast<char>('a' + i % 26));
    const bool is_number = i % 5 == 0;
    const std::string value = is_number ? std::to_string(i * 16807) : text;
    data.push_back({name, is_number ? slot::uint32(i * 16807) : slot::utf16(text)});
    expected += "<Data Name=\"" + name + (value.empty() ? "\"/>" : "\">" + value + "</Data>");
  }
  const std::string xml = exported(log_builder().chunk({record(7, {.data = data})}), "xml");
  EXPECT_NE(xml.find(expected + "</EventData>"), std::string::npos);
}

TEST(forms, data_with_and_without_names) {
  const auto data = [](payload_form form, std::vector<data_field> fields) {
    return part(json_of({.form = form, .data = std::move(fields)}),
                "\"EventData\":", ",\"zanvik\"");
  };
  const data_field a{"", slot::utf16("10.00.")}, b{"", slot::utf16("15063")};
  EXPECT_EQ(data(payload_form::unnamed_event_data, {a, b}),
            R"({"Data":{"#text":["10.00.","15063"]}}})");
  EXPECT_EQ(data(payload_form::unnamed_event_data, {a}), R"({"Data":{"#text":"10.00."}}})");
  EXPECT_EQ(data(payload_form::unnamed_event_data, {{"", slot::multi_utf16({"x"})}}),
            R"({"Data":{"#text":"x"}}})");
  EXPECT_EQ(data(payload_form::unnamed_event_data, {{"", slot::multi_utf16({})}, a}),
            R"({"Data":{"#text":["10.00."]}}})");
  EXPECT_EQ(data(payload_form::unnamed_event_data, {{"", slot::null()}}), R"({"Data":null}})");
  EXPECT_EQ(data(payload_form::event_data,
                 {{"N", slot::uint8(1)}, {"N", slot::uint8(2)}, {"N_1", slot::uint8(3)}}),
            R"({"N":1,"N_1":2,"N_1_1":3}})")
      << "each name is given once";
}

TEST(forms, system_members_as_windows_leaves_them_out) {
  const std::string bare = json_of({.event_id = 4625});
  EXPECT_EQ(part(bare, "\"EventID\":", ",\"Version\""), "4625");
  EXPECT_EQ(part(bare, "\"Correlation\":", ",\"Execution\""), "null");
  EXPECT_EQ(part(bare, "\"Security\":", "},\"EventData\""), "null");
  const std::string full = json_of({.event_id = 6009, .qualifiers = 32768, .user_sid = "S-1-5-18"});
  EXPECT_EQ(part(full, "\"EventID\":", ",\"Version\""),
            R"({"#attributes":{"Qualifiers":32768},"#text":6009})");
  EXPECT_EQ(part(full, "\"Security\":", "},\"EventData\""),
            R"({"#attributes":{"UserID":"S-1-5-18"}})");
}

// A template whose names and texts are meant to break a document.
TEST(forms, hostile_names_stay_well_formed) {
  const template_definition definition{
      "0a0b0c0d-0000-0000-0000-000000000001", [](bxml_builder& b) {
        b.fragment_header().open_with_attributes("Ev ent><");
        b.attribute("a\"b").value("]]>&\n\"").attribute("a\"b").value("2").close_start();
        b.open("zanvik").close_start().value("<!--").entity_ref("lt").entity_ref("odd");
        b.char_ref(7).normal_sub(0, 1).end_element();
        b.open("zanvik").close_empty().end_element().end_of_stream();
      }};
  const log_builder log = log_builder().chunk(
      {template_record(1, default_filetime(1), definition, {slot::utf16("x")})});
  EXPECT_EQ(part(exported(log, "xml"), "?>\n<Events>\n", "</Events>"),
            "<?zanvik log=\"a.evtx\" offset=\"4608\" record=\"1\"?>"
            "<Ev_ent__ a_b=\"]]&gt;&amp;&#10;&quot;\" a_b_1=\"2\">"
            "<zanvik>&lt;!--&lt;&amp;odd;\xef\xbf\xbdx</zanvik><zanvik/></Ev_ent__>"
            "<?zanvik lossy=\"true\"?>\n");
  EXPECT_EQ(part(exported(log, "jsonl"), "{", ",\"zanvik\":{\"log\""),
            R"("Ev ent><":{"#attributes":{"a\"b":"]]>&\n\"","a\"b_1":"2"},)"
            R"("zanvik":"<!--<&odd;\u0007x","zanvik_1":null})");
}

TEST(forms, a_name_that_only_the_record_knows) {
  const template_definition definition{
      "0a0b0c0d-0000-0000-0000-000000000002", [](bxml_builder& b) {
        b.fragment_header().open("Event").close_start().open("EventData").close_start();
        b.open_with_attributes("Data").attribute("Name").normal_sub(0, 1).close_start();
        b.normal_sub(1, 4).end_element().end_element().end_element().end_of_stream();
      }};
  chunk_builder chunk;
  std::uint64_t number = 0;
  for (const char* name : {"first", "second"}) {
    chunk.add(template_record(++number, default_filetime(1), definition,
                              {slot::utf16(name), slot::uint8(5)}));
  }
  const std::string json = exported(log_builder().chunk(chunk), "jsonl");
  EXPECT_NE(json.find(R"("EventData":{"first":5})"), std::string::npos) << json;
  EXPECT_NE(json.find(R"("EventData":{"second":5})"), std::string::npos) << json;
}

struct cell_row {
  const char* text;
  const char* cell;
};

TEST(forms, csv_cells) {
  const cell_row rows[] = {
      {"=1+1", "\"'=1+1\""}, {"+1", "\"'+1\""},
      {"-1", "\"'-1\""},     {"@x", "\"'@x\""},
      {"\tx", "\"'\tx\""},   {"\rx", "\"'\rx\""},
      {"a=1", "\"a=1\""},    {"say \"x\"", "\"say \"\"x\"\"\""},
      {"a\nb", "\"a\nb\""},  {"", "\"\""},
  };
  for (const cell_row& row : rows) {
    const std::string csv = exported(
        log_builder().chunk({record(
            7, {.form = payload_form::unnamed_event_data, .data = {{"", slot::utf16(row.text)}}})}),
        "csv");
    EXPECT_TRUE(csv.ends_with("\"4\"," + std::string(row.cell) + "\n")) << csv;
  }
  const std::string named =
      exported(log_builder().chunk({record(7, {.data = {{"=cmd", slot::utf16("x")}}})}), "csv");
  EXPECT_TRUE(named.ends_with(",\"'=cmd: x\"\n")) << named;
}

TEST(forms, timesketch_and_elastic_have_what_their_importers_look_for) {
  const log_builder log = log_builder().chunk({record(
      7, {.event_id = 4625,
          .provider = "P",
          .filetime = 131587674291368792,
          .channel = "Security",
          .computer = "C",
          .user_sid = "S-1-5-18",
          .data = {{"TargetUserName", slot::utf16("a\nb")}, {"LogonGUID", slot::uint8(3)}}})});
  const std::string sketch = exported(log, "timesketch");
  for (const char* member :
       {R"("message":"P event 4625: TargetUserName: a b; LogonGUID: 3")",
        R"("datetime":"2017-12-26T13:10:29.136879+00:00")", R"("timestamp":1514293829136879)",
        R"("timestamp_desc":"Event Logged")", R"("data_type":"windows:evtx:record")",
        R"("event_identifier":4625)", R"("record_number":7)", R"("source_name":"P")",
        R"("channel":"Security")", R"("computer_name":"C")", R"("user_sid":"S-1-5-18")",
        R"("event_level":4)", R"("strings":["a\nb","3"])", R"("filename":"a.evtx")",
        R"("target_user_name":"a\nb")", R"("logon_guid":"3")",
        R"("xml_string":"<Event xmlns=\"http)"}) {
    EXPECT_NE(sketch.find(member), std::string::npos) << member << "\n" << sketch;
  }
  const std::string elastic = exported(log, "elastic");
  for (const char* member :
       {R"({"@timestamp":"2017-12-26T13:10:29.1368792Z")",
        R"("event":{"kind":"event","code":"4625")",
        R"("winlog":{"api":"wineventlog-file","channel":"Security","provider_name":"P")",
        R"("process":{"pid":612,"thread":{"id":4}})", R"("user":{"identifier":"S-1-5-18"})",
        R"("event_data":{"TargetUserName":"a\nb","LogonGUID":"3"})", R"("level":"information")"}) {
    EXPECT_NE(elastic.find(member), std::string::npos) << member << "\n" << elastic;
  }
}

// The legacy log as JSON lines, by one reader.
std::string legacy_json(const evt_builder& log) {
  writing_sink sink("jsonl");
  evt_event_reader reader(sink);
  reader.set_source(sink.source());
  own_bytes bytes(log.bytes());
  reader.set_buffer(0, bytes.span().data() + bytes.span().size());
  EXPECT_TRUE(walk_evt_log(bytes.span(), reader));
  return sink.take();
}

// What a record lacks decides its tree: none may get that of another.
TEST(forms, legacy_records_differ_by_what_they_lack) {
  evt_record_fields whole{.record_num = 1, .sid = "S-1-5-18", .strings = {}, .data = bytes_of({1})};
  evt_record_fields nobody = whole, undated = whole;
  nobody.sid = "";
  undated.time_generated = 0;
  for (const std::size_t strings : {0, 40}) {
    evt_builder all;
    std::string expected;
    for (evt_record_fields* record : {&whole, &nobody, &undated}) {
      record->strings.assign(strings, "x");
      std::string alone = legacy_json(evt_builder().add(*record));
      const std::size_t at = alone.find("\"offset\":48");
      alone.replace(at, 11, "\"offset\":" + std::to_string(all.size()));
      expected += alone;
      all.add(*record);
    }
    EXPECT_EQ(legacy_json(all), expected) << strings;
    EXPECT_EQ(expected.find("UserID"), expected.rfind("UserID", expected.find('\n')));
  }
}

// Level and keywords that the template itself has, rather than the record.
TEST(forms, elastic_names_constant_levels) {
  const template_definition definition{
      "0a0b0c0d-0000-0000-0000-000000000003", [](bxml_builder& b) {
        b.fragment_header().open("Event").close_start().open("System").close_start();
        b.open("Level").close_start().value("2").end_element();
        b.open("Keywords").close_start().value("0x10000000000000").end_element();
        b.end_element().end_element().end_of_stream();
      }};
  const std::string line = exported(
      log_builder().chunk({template_record(1, default_filetime(1), definition, {})}), "elastic");
  EXPECT_NE(line.find(R"("level":"error")"), std::string::npos) << line;
  EXPECT_NE(line.find(R"("keywords":["Audit Failure"])"), std::string::npos) << line;
}

TEST(forms, legacy_records_are_events) {
  const evt_builder log = evt_builder().add({.record_num = 9,
                                             .event_id = 0x8000177b,
                                             .event_type = 2,
                                             .source = "EventLog",
                                             .computer = "OLD",
                                             .sid = "S-1-5-21-1-2-3-500",
                                             .strings = {"one", "t\"wo"},
                                             .data = bytes_of({1, 0xff})});
  EXPECT_EQ(
      legacy_json(log),
      R"({"Event":{"#attributes":{"xmlns":"http://schemas.microsoft.com/win/2004/08/events/event"},)"
      R"("System":{"Provider":{"#attributes":{"Name":"EventLog"}},)"
      R"("EventID":{"#attributes":{"Qualifiers":32768},"#text":6011},"Level":3,"Task":0,)"
      R"("Keywords":"0x80000000000000",)"
      R"("TimeCreated":{"#attributes":{"SystemTime":"2024-01-15T08:00:00.0000000Z"}},)"
      R"("EventRecordID":9,"Computer":"OLD",)"
      R"("Security":{"#attributes":{"UserID":"S-1-5-21-1-2-3-500"}}},)"
      R"("EventData":{"Data":{"#text":["one","t\"wo"]},"Binary":"01FF"}},)"
      R"("zanvik":{"log":"a.evtx","offset":48,"record":9,)"
      R"("written":"2024-01-15T08:00:00.0000000Z"}})"
      "\n");
}

}  // namespace
}  // namespace zanvik::testing
