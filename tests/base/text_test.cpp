// Case, blanks, replacing, line-end marks, search without case, and splitting.
#include "base/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text_split.h"

namespace zanvik {
namespace {

using texts = std::vector<std::string>;

TEST(qx_text, trimming) {
  const std::tuple<std::string, std::string, bool> rows[] = {
      {" \t a b\r\n", "a b", true},
      {"ab", "ab", true},
      {"  ", "", false},  // nothing left is false
      {"", "", false},
  };
  for (const auto& [given, left, result] : rows) {
    std::string text = given;
    EXPECT_EQ(trim_blanks(text), result) << given;
    EXPECT_EQ(text, left);
    EXPECT_EQ(trimmed(given), left);
  }
}

TEST(qx_text, replacing) {
  std::string text = "aAbA-\r\n\n";
  replace_char(text, 'a', '.', false);
  EXPECT_EQ(text, ".AbA-\r\n\n");
  replace_char(text, 'a', '.', true);
  EXPECT_EQ(strip_line_ends(text), 3u);
  EXPECT_EQ(remove_char(text, '.'), 3u);
  EXPECT_EQ(text, "b-");
  std::string hit = "One TWO two";
  EXPECT_FALSE(replace_first(hit, "Two", "3", false));
  EXPECT_TRUE(replace_first(hit, "Two", "3", true));  // the rest keeps its case
  EXPECT_EQ(hit, "One 3 two");
  EXPECT_FALSE(replace_first(hit, "", "x", true));
}

TEST(qx_text, line_end_marks) {
  const std::tuple<std::string, std::string> rows[] = {
      {"a\r\nb\n", "a[CRLF]b[LF]"},
      {"a\rb\nc", "a\rb[LF]c"},  // beside an LF a lone CR stays
      {"a\rb\r", "a[CR]b[CR]"},
      {"\n\ra", "[LFCR]a"},
      {"\n\r\n", "[LFCR]\n[CRLF]"},       // the CR belongs to both ends, so
      {"a\n\r\nb", "a[LFCR]\nb[CRLF]b"},  // the rest is copied in front of the second
      {"\r\n\r\n", "[CRLF][CRLF]"},
      {"\r\r\nx", "\r[CRLF]x"},
      {"\n", "[LF]"},
  };
  for (const auto& [text, marked] : rows) EXPECT_EQ(mark_line_ends(text), marked);
}

// The plain way: lower-cased copies and a substring search.
bool contains_plainly(const std::string& haystack, const std::string& needle) {
  return to_lower(haystack).find(to_lower(needle)) != std::string::npos;
}

TEST(qx_text, search_without_case_agrees_with_the_plain_one) {
  // Every position in texts around the block size, with decoys of the first letter before and
  // after.
  for (std::size_t size = 0; size <= 40; ++size) {
    for (std::size_t at = 0; at <= size; ++at) {
      std::string text(size, 'n');
      text.insert(at, "nEEdle");
      for (const std::string needle : {"Needle", "eedle", "E", "NNEEDLE", "needlen", "needles"}) {
        EXPECT_EQ(contains_nocase(text, needle), contains_plainly(text, needle)) << text << needle;
        const auto cut = text.substr(0, at + 5);  // in the midst of it; the rest stands behind
        EXPECT_EQ(contains_nocase(std::string_view(text).substr(0, at + 5), needle),
                  contains_plainly(cut, needle));
      }
    }
  }
  EXPECT_TRUE(contains_nocase("a", ""));
  EXPECT_FALSE(contains_nocase("\xc3\x84", "\xc3\xa4"));  // beyond ASCII the bytes count
  EXPECT_FALSE(contains_nocase("@", "`"));                // a case apart, yet no letters
}

TEST(qx_text, splitting_on_a_character) {
  const std::tuple<std::string, bool, bool, texts> rows[] = {
      {"a,,b", false, false, {"a", "b"}},
      {"a,,b", false, true, {"a", "", "b"}},
      {",a", false, false, {"a"}},
      {"a,", false, true, {"a", ""}},
      {"abc", false, false, {"abc"}},
      {" a , b ", true, false, {"a", "b"}},
      {"a, ,b", true, false, {"a", "b"}},  // trimmed to nothing
      {"a, ,b", false, false, {"a", " ", "b"}},
      {" ", true, true, {""}},
  };
  for (const auto& [value, trim, keep_empty, expected] : rows) {
    texts items = {"gone"};
    EXPECT_TRUE(split_on_char(value, ',', items, trim, keep_empty, false));
    EXPECT_EQ(items, expected) << value;
  }
  texts items = {"kept"};
  EXPECT_TRUE(split_on_char("a,b", ',', items, false, false, true));
  EXPECT_EQ(items, (texts{"kept", "a", "b"}));
  EXPECT_FALSE(split_on_char("", ',', items, false, true, false));
  EXPECT_TRUE(items.empty());
}

TEST(qx_text, splitting_goes_by_the_order_of_the_separators) {
  const std::tuple<std::string, char, texts> rows[] = {
      {"a,b|c", '|', {"a,b", "c"}},  // not the one that stands first in the value
      {"a;b,c", ',', {"a;b", "c"}},
      {" a b ", 0, {" a b "}},  // nothing split, nothing trimmed
      {"", 0, {}},
  };
  for (const auto& [value, found, expected] : rows) {
    texts items = {"gone"};
    EXPECT_EQ(split_on_first_of(value, items, true, false, "|,;"), found) << value;
    EXPECT_EQ(items, expected);
  }
}

TEST(qx_text, splitting_on_blanks_honours_quotes) {
  const std::tuple<std::string, std::size_t, bool, texts> rows[] = {
      {"  a\tb \r\n c", 0, false, {"a", "b", "c"}},
      {"a b c", 2, false, {"a", "b"}},
      {R"(a "b  c" d)", 0, true, {"a", "b c", "d"}},  // the words are joined by one blank
      {R"(a "b c)", 0, true, {"a", "b c"}},           // an open quote takes the rest
      {R"("a" b)", 0, true, {"a", "b"}},
      {R"("a")", 0, true, {R"("a")"}},  // a single word keeps its quotes
      {R"(a "b c")", 0, false, {"a", R"("b)", R"(c")"}},
      {R"(a " b " c)", 0, true, {"a", " b ", "c"}},
      {"", 0, true, {}},
  };
  for (const auto& [text, limit, quotes, expected] : rows) {
    texts items = {"gone"};
    EXPECT_EQ(split_on_blanks(text, limit, items, quotes), expected.size());
    EXPECT_EQ(items, expected) << text;
  }
}

TEST(qx_text, lists_of_numbers_and_bytes_leave_out_what_does_not_read) {
  std::vector<std::int64_t> numbers;
  EXPECT_TRUE(parse_number_list("4624, x10,bad , -1", numbers, ','));
  EXPECT_EQ(numbers, (std::vector<std::int64_t>{4624, 16, -1}));
  EXPECT_FALSE(parse_number_list("zz", numbers, ','));
  EXPECT_TRUE(numbers.empty());

  std::vector<std::uint8_t> bytes;
  EXPECT_EQ(parse_hex_bytes(bytes, "4d:5a:ff:zz", ':', true), 4u);
  EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0x4d, 0x5a, 0xff, 0}));
  EXPECT_EQ(parse_hex_bytes(bytes, "10:0x10:zz:257", ':', false), 3u);
  EXPECT_EQ(bytes, (std::vector<std::uint8_t>{10, 16, 1}));
}

// A name must not end its line or control the terminal, whatever a log calls it.
TEST(printable_name, control_characters_come_out_as_numbers) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"Data", "Data"},
      {"", ""},
      {"a\r\n1,4624", "a\\x0d\\x0a1,4624"},
      {"\x1b[2J\x7f", "\\x1b[2J\\x7f"},
      {"\xc2\x9b"
       "2J",
       "\\x9b"
       "2J"},                                    // the same command in one character
      {"\xc2\xa0\xc3\x84", "\xc2\xa0\xc3\x84"},  // letters beside it
      {"\xc2", "\xc2"},                          // cut
  };
  for (const auto& [name, expected] : rows) EXPECT_EQ(printable_name(name), expected);
}

}  // namespace
}  // namespace zanvik
