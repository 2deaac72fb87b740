// UTF-8 from UTF-16, strict UTF-8, UTF-16 text in bytes, and positions of bytes and words.
#include "base/utf16.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/byte_search.h"

namespace zanvik {
namespace {

std::vector<std::byte> bytes_of(std::u16string_view units) {
  std::vector<std::byte> bytes(2 * units.size());
  if (!bytes.empty()) std::memcpy(bytes.data(), units.data(), bytes.size());
  return bytes;
}

std::vector<std::byte> bytes_of(const std::string& text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

TEST(qx_utf16, surrogates_pair_or_all_stand_alone) {
  const std::tuple<std::u16string, std::string, std::size_t> rows[] = {
      {u"a\u00e9\u4e2d", "a\xc3\xa9\xe4\xb8\xad", 3},
      {u"\u007f\u0080\u07ff\u0800\uffff", "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf", 5},
      {u"x\U0001f600y\U0010ffff", "x\xf0\x9f\x98\x80y\xf4\x8f\xbf\xbf", 6},
      {u"\U0001f600\xd83d", "\xed\xa0\xbd\xed\xb8\x80\xed\xa0\xbd", 3},  // one alone, so all alone
      {u"\xde00\xd83d", "\xed\xb8\x80\xed\xa0\xbd", 2},                  // the wrong way round
      {u"\xd83d\xd83d\xde00", "\xed\xa0\xbd\xed\xa0\xbd\xed\xb8\x80", 3},
      {std::u16string(u"\U0001f600\0\xd83d", 4), "\xf0\x9f\x98\x80", 2},  // behind the NUL: nothing
      {std::u16string(u"\xd83d\0\xde00", 3), "\xed\xa0\xbd", 1},
      {u"", "", 0},
  };
  for (const auto& [units, text, used] : rows) {
    std::string out = "=";
    EXPECT_EQ(append_utf8_from_utf16(out, bytes_of(units)), used) << text;
    EXPECT_EQ(out, "=" + text);
  }
}

TEST(qx_utf16, a_partner_behind_the_end_is_none) {
  std::string out;
  const auto bytes = bytes_of(u"x\U0001f600");
  EXPECT_EQ(append_utf8_from_utf16(out, std::span(bytes).first(4)), 2u);
  EXPECT_EQ(out, "x\xed\xa0\xbd");
}

TEST(qx_utf16, any_place_of_the_first_other_unit) {
  // Lengths around the blocks of eight and around the text that is converted in one step.
  for (std::size_t size : {1u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 127u, 128u, 129u, 300u}) {
    for (std::size_t at = 0; at <= size; ++at) {
      std::u16string units(size, u'k');
      std::string text(size, 'k');
      if (at < size) {
        units[at] = u'\u0416';
        text.replace(at, 1, "\xd0\x96");
      }
      auto bytes = bytes_of(units);
      bytes.push_back(std::byte{'k'});  // half a unit
      std::string out;
      ASSERT_EQ(append_utf8_from_utf16(out, bytes), size);
      ASSERT_EQ(out, text);
      if (at == size) continue;
      units[at] = 0;
      out.clear();
      ASSERT_EQ(append_utf8_from_utf16(out, bytes_of(units)), at);
      ASSERT_EQ(out, std::string(at, 'k'));
    }
  }
}

TEST(qx_utf16, length_limits) {
  const auto bytes = bytes_of(std::u16string(u"ab\0cd", 5));
  const std::tuple<std::ptrdiff_t, bool, std::size_t, std::string> rows[] = {
      {99, false, 4, "ab"}, {10, true, 6, "ab"},
      {5, true, 4, "ab"},  // the NUL is not wholly inside
      {3, false, 2, "a"},   {0, true, 0, ""},
  };
  for (const auto& [length, count_terminator, used, text] : rows) {
    std::string out = "gone";
    EXPECT_EQ(utf8_from_utf16(bytes, out, length, count_terminator), used);
    EXPECT_EQ(out, text) << length;
  }
  std::string out;
  EXPECT_EQ(utf8_from_utf16(bytes_of(std::u16string(600, u'x')), out), 1000u);
  EXPECT_EQ(out, std::string(500, 'x'));
}

TEST(qx_utf16, strict_utf8) {
  const std::tuple<std::string, bool> rows[] = {
      {"abc", true},
      {"\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80", true},
      {"\xc0\x80\xed\xa0\x80\xf7\xbf\xbf\xbf", true},  // overlong, surrogate, beyond the last
      {"", false},
      {"a\xc3", false},  // cut off
      {"\xe4\xb8", false},
      {"\xf0\x9f\x98", false},
      {"\xc3"
       "a",
       false},  // no continuation
      {"\xe4\xb8\xc0", false},
      {"\xa9", false},  // cannot lead
      {"\xf8\x80\x80\x80\x80", false},
  };
  for (const auto& [text, strict] : rows) EXPECT_EQ(is_strict_utf8(text), strict) << text;
}

std::string runs_of(std::span<const std::byte> bytes, std::size_t min_units) {
  std::string out;
  for_each_utf16_run(bytes, min_units, [&](utf16_run run) {
    out += std::to_string(run.offset) + ":";
    append_run_text(out, bytes, run);
    out += ";";
  });
  return out;
}

TEST(qx_utf16, runs_of_ascii_in_bytes) {
  using namespace std::string_literals;
  const std::tuple<std::string, std::string> rows[] = {
      {"a\0b\0c\0d\0"s, "0:abcd;"},
      {"xa\0b\0c\0d\0"s, "1:abcd;"},       // on any byte
      {" \0 \0a\0b\0c\0d\0"s, "4:abcd;"},  // not from a blank
      {" \0a\0b\0c\0"s, ""},               // which does not count either
      {"a\0 \0c\0d\0"s, "0:a cd;"},
      {"a\0b\0c\0\1\0d\0e\0f\0g\0"s, "8:defg;"},
      {"a\0b\0c\0d\0\x7f"
       "e\0f\0g\0h\0"s,
       "0:abcd;9:efgh;"},
      {"a\0b\0c\0d"s, ""},  // half a unit at the end
      {"a\0b\0c\0d\0e\1"s, "0:abcd;"},
      {""s, ""},
  };
  for (const auto& [bytes, runs] : rows) EXPECT_EQ(runs_of(bytes_of(bytes), 4), runs) << runs;
}

TEST(qx_utf16, found_strings_can_be_gathered) {
  const auto bytes = bytes_of(std::u16string(u"ab\r\ncd\u0100ef"));
  std::vector<std::string> texts;
  std::vector<std::uint64_t> offsets;
  EXPECT_TRUE(find_utf16_strings(bytes, 3, texts, offsets, 100, false, true));
  EXPECT_EQ(texts, (std::vector<std::string>{"ab\r\ncd"}));
  EXPECT_EQ(offsets, (std::vector<std::uint64_t>{100}));
  EXPECT_TRUE(find_utf16_strings(bytes, 2, texts, offsets, 0, true));
  EXPECT_EQ(texts, (std::vector<std::string>{"ab\r\ncd", "ab", "cd", "ef"}));
  EXPECT_EQ(offsets, (std::vector<std::uint64_t>{100, 0, 8, 14}));
  EXPECT_FALSE(find_utf16_strings(bytes, 3, texts, offsets, 0, true));
  EXPECT_EQ(texts.size(), 4u);
}

TEST(qx_search, places_of_bytes) {
  using places = std::vector<std::uint64_t>;
  const struct {
    std::string haystack, needle;
    places plain, fast;
  } rows[] = {
      {"xxabxxxxab", "ab", {2, 8}, {2, 8}},
      {"ababxab", "ab", {0, 2, 5}, {0, 5}},  // the fast way is blind for twice the length
      {"aaaaa", "aa", {0, 2}, {0}},          // no overlaps
      {"xaaab", "aab", {2}, {2}},
      {"ab", "abc", {}, {}},
      {"ab", "", {}, {}},
      {"zzzab", "ab", {3}, {3}},  // at the very end
  };
  for (const auto& row : rows) {
    const auto haystack = bytes_of(row.haystack), needle = bytes_of(row.needle);
    for (const bool fast : {false, true}) {
      places expected = fast ? row.fast : row.plain;
      places found = {77};
      EXPECT_EQ(find_bytes(haystack, needle, found, 0, fast, false), !expected.empty());
      EXPECT_EQ(found, expected) << row.haystack;
      expected.resize(expected.empty() ? 0 : 1);
      EXPECT_EQ(find_bytes(haystack, needle, found, 0, fast, true), !expected.empty());
      EXPECT_EQ(found, expected);
      const auto first = find_first_bytes(haystack, needle, fast);
      EXPECT_EQ(first ? places{*first} : places{}, expected);
    }
  }
}

TEST(qx_search, places_of_a_word) {
  using places = std::vector<std::uint64_t>;
  const auto bytes = bytes_of("LfLeLfLe..LfLe");
  places found = {77};
  EXPECT_TRUE(find_u32(found, bytes, 0x654c664c, 4, false));
  EXPECT_EQ(found, (places{0, 4}));  // the third is not on the grid
  EXPECT_TRUE(find_u32(found, bytes, 0x654c664c, 5, false));
  EXPECT_EQ(found, (places{0, 10}));
  EXPECT_TRUE(find_u32(found, bytes, 0x654c664c, 4, true));
  EXPECT_EQ(found, places{0});
  EXPECT_FALSE(find_u32(found, bytes, 0x654c664c, 3, false));
  EXPECT_TRUE(find_u32(found, bytes, 0x654c664c, ~std::size_t{0}, false));  // does not wrap
}

}  // namespace
}  // namespace zanvik
