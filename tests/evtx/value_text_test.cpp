// Every type of value with the values at its edges.
#include "evtx/values/value_text.h"

#include <gtest/gtest.h>

#include <limits>

#include "value_builder.h"

namespace zanvik::testing {
namespace {

std::string text_of(const slot_value& value) {
  const byte_cursor bytes(value.bytes);
  const auto size = value.declared_size.value_or(static_cast<std::uint16_t>(value.bytes.size()));
  std::string text = "<";  // what stands in the output must stay
  append_value_text(text, raw_value_at(bytes, 0, value.type, size));
  EXPECT_EQ(text[0], '<');
  return text.substr(1);
}

slot_value sized(slot_value value, std::uint16_t size) {
  return slot::with_declared_size(std::move(value), size);
}

TEST(value_text, renders_each_type) {
  const std::tuple<const char*, slot_value, std::string> rows[] = {
      {"null of no size", slot::null(), "0"},
      {"null of any size", slot::null(3), "0"},
      {"text", slot::utf16("a\xc3\xa4\xe2\x82\xac"), "a\xc3\xa4\xe2\x82\xac"},
      {"a NUL ends it", slot::utf16(std::string_view("ab\0cd", 5)), "ab"},
      {"an odd byte behind it is none", slot::raw(1, bytes_of({'a', 0, 'b'})), "a"},
      {"its size may be less than what is there", sized(slot::utf16("abc"), 4), "ab"},
      {"empty", slot::utf16(""), ""},
      {"XML text is text", slot::raw(35, bytes_of({'x', 0})), "x"},
      {"ansi ends at its NUL, without regard to the size", sized(slot::ansi("abcdef"), 2),
       "abcdef"},
      {"ansi without a NUL ends with what there is", slot::raw(2, bytes_of("abc")), "abc"},
      {"negative byte shows unsigned", slot::int8(-1), "255"},
      {"byte", slot::uint8(128), "128"},
      {"16 bits, least", slot::int16(-32768), "-32768"},
      {"16 bits, unsigned", slot::uint16(65535), "65535"},
      {"32 bits, least", slot::int32(std::numeric_limits<std::int32_t>::min()), "-2147483648"},
      {"32 bits, unsigned", slot::uint32(0xffffffff), "4294967295"},
      {"type 7 of 8 bytes", slot::raw(7, bytes_of({0, 0, 0, 0, 1, 0, 0, 0})), "4294967296"},
      {"type 8 of 8 bytes", slot::raw(8, bytes_of({0, 0, 0, 0, 0, 0, 0, 0x80})),
       "-9223372036854775808"},
      {"type 7 of 2 bytes reads 8", sized(slot::raw(7, bytes_of({1, 0, 0, 0, 0, 0, 0, 0})), 2),
       "1"},
      {"64 bits, signed", slot::int64(-1), "-1"},
      {"64 bits, unsigned, shows like the signed one", slot::uint64(0xffffffffffffffff), "-1"},
      {"number whose bytes are not there", slot::raw(10, bytes_of({1, 2, 3, 4, 5, 6, 7})), ""},
      {"float", slot::float32(1.5f), "1.500000"},
      {"negative zero", slot::float32(-0.0f), "-0.000000"},
      {"largest float: 46 characters are too many", slot::float32(3.4e38f), "0"},
      {"not a number", slot::float64(std::numeric_limits<double>::infinity()), "inf"},
      {"boolean", slot::boolean(true), "true"},
      {"boolean looks at one byte", slot::raw(13, bytes_of({0, 1, 0, 0})), "false"},
      {"binary", slot::binary(bytes_of({0, 0xab, 0x10})), "00 ab 10"},
      {"empty binary", slot::binary({}), ""},
      {"GUID", slot::guid("6b29fc40-ca47-1067-b31d-00dd010662da"),
       "6b29fc40-ca47-1067-b31d-00dd010662da"},
      {"GUID of 15 bytes", slot::raw(15, byte_vector(15)), ""},
      {"size of 32 bits", slot::size32(0xffffffff), "4294967295"},
      {"size of 64 bits", slot::size64(0xffffffffffffffff), "-1"},
      {"no time", slot::filetime(0), ""},
      {"time", slot::filetime(filetime(2024, 2, 29, 23, 59, 59, 9999999)),
       "2024-02-29 23:59:59.999999900"},
      {"system time skips the day of the week", slot::systemtime(2024, 2, 29, 23, 5, 6, 7, 4),
       "02/29/2024 : 23:05:06.007"},
      {"SID of one authority", slot::sid("S-1-5-18"), "S-1-5-18"},
      {"SID of none", slot::raw(19, bytes_of({1, 0, 0, 0, 0, 0, 0, 5})), "S-1-5"},
      {"SID of two authorities shows nothing", slot::sid("S-1-5-32-544"), ""},
      {"SID of four authorities shows nothing", slot::sid("S-1-5-21-1-2-500"), ""},
      {"SID that is cut off", slot::raw(19, bytes_of({1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0})), ""},
      {"SID whose authority has more than one byte shows the last",
       slot::raw(19, bytes_of({2, 1, 1, 2, 3, 4, 5, 255, 255, 255, 255, 255})),
       "S-2-255-4294967295"},
      {"hexadecimal, 32 bits", slot::hex32(0xab), "0x000000ab"},
      {"handle", slot::raw(32, bytes_of({1, 0, 0, 0x80})), "0x80000001"},
      {"hexadecimal, 64 bits", slot::hex64(0x8020000000000000), "0x8020000000000000"},
      {"texts", slot::multi_utf16({"a", "bc"}), "a; bc"},
      {"texts with an empty one between", slot::multi_utf16({"a", "", "b"}), "a; ; b"},
      {"texts without the last NUL", slot::raw(129, bytes_of({'a', 0, 0, 0, 'b', 0})), "a; b"},
      {"nested XML has no text of its own", slot::raw(33, bytes_of({1, 2})), ""},
      {"arrays have none", slot::raw(148, bytes_of({1, 0, 0, 0})), ""},
      {"nor have unknown types", slot::raw(0x1234, bytes_of({1, 0, 0, 0})), ""},
  };
  for (const auto& [reason, value, text] : rows) EXPECT_EQ(text_of(value), text) << reason;
}

// A number's text has room for 37 bytes including the one that ends it: 36 characters fit, of 37
// the last is lost, 38 give "0".
TEST(value_text, floats_lose_what_their_buffer_has_no_room_for) {
  const auto integer = [](int digits) {  // a power of two with that many digits
    double value = 1;
    while (std::to_string(value).size() < static_cast<std::size_t>(digits) + 7) value *= 2;
    return value;
  };
  for (const int digits : {28, 29, 30, 31}) {
    const std::string whole = std::to_string(integer(digits));
    ASSERT_EQ(whole.size(), static_cast<std::size_t>(digits) + 7);
    const std::string expected = whole.size() <= 36   ? whole
                                 : whole.size() == 37 ? whole.substr(0, 36)
                                                      : "0";
    EXPECT_EQ(text_of(slot::float64(integer(digits))), expected) << digits;
  }
}

TEST(value_text, full_sids_show_whole_or_not_at_all) {
  const std::tuple<const char*, slot_value, std::string> rows[] = {
      {"an account", slot::sid("S-1-5-21-3583694148-1414552638-2922671848-1000"),
       "S-1-5-21-3583694148-1414552638-2922671848-1000"},
      {"one sub-authority", slot::sid("S-1-5-18"), "S-1-5-18"},
      {"all bytes of the authority", slot::raw(19, bytes_of({1, 0, 0, 0, 0, 1, 2, 3})),
       "S-1-66051"},
      {"above 32 bits it is hexadecimal", slot::raw(19, bytes_of({1, 0, 0, 1, 2, 3, 4, 5})),
       "S-1-0x000102030405"},
      {"a head that is cut", slot::raw(19, bytes_of({1, 0, 0, 0, 0, 0, 0})), ""},
      {"a sub-authority behind the value", sized(slot::sid("S-1-5-32-544"), 12), ""},
      {"bytes behind the SID do not count",
       slot::raw(19, bytes_of({1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0, 9})), "S-1-5-18"},
  };
  for (const auto& [reason, value, text] : rows) {
    const auto size = value.declared_size.value_or(static_cast<std::uint16_t>(value.bytes.size()));
    raw_value raw = raw_value_at(byte_cursor(value.bytes), 0, value.type, size);
    raw.full_sid = true;
    std::string out;
    append_value_text(out, raw);
    EXPECT_EQ(out, text) << reason;
  }
}

TEST(value_text, longest_sid_fits_its_bound) {
  byte_vector longest(8 + 4 * 255, std::byte{0xff});
  raw_value raw = raw_value_at(byte_cursor(longest), 0, value_type::sid,
                               static_cast<std::uint16_t>(longest.size()));
  raw.full_sid = true;
  std::string out;
  append_value_text(out, raw);
  EXPECT_EQ(out.size(), std::string("S-255-0xffffffffffff").size() + 255 * 11);
  EXPECT_LE(out.size(), value_text_bound(raw));
}

TEST(value_text, binary_values_show_their_utf16_runs) {
  byte_vector runs = bytes_of({1});
  append_utf16(runs, "Disk");
  append_bytes(runs, bytes_of({0xff, 0xff}));
  append_utf16(runs, " abc");  // does not start with a blank, so three are too few
  append_bytes(runs, bytes_of({0xff}));
  append_utf16(runs, "a, b|c");
  EXPECT_EQ(text_of(slot::binary(runs)), "Disk ;a, b|c ;");
}

}  // namespace
}  // namespace zanvik::testing
