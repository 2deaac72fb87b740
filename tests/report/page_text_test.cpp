// Texts in the page: nothing hidden, nothing that leaves its place.
#include "report/page_text.h"

#include <gtest/gtest.h>

namespace zanvik::testing {
namespace {

TEST(page_text, visible_shows_what_would_hide_or_mislead) {
  const struct {
    const char* what;
    std::string text, shown;
  } rows[] = {
      {"plain",
       "Gr\xc3\xbc\xc3\x9f"
       "e \xe6\x97\xa5\xe6\x9c\xac",
       "Gr\xc3\xbc\xc3\x9f"
       "e \xe6\x97\xa5\xe6\x9c\xac"},
      {"line ends", "a\r\nb\nc\td", "a\nb\nc\td"},
      {"a lone carriage return", "a\rb",
       "a\xe2\x90\x8d"
       "b"},
      {"control characters", std::string("\x1b[2J\0\x7f", 6),
       "\xe2\x90\x9b[2J\xe2\x90\x80\xe2\x90\xa1"},
      {"C1 control", "\xc2\x9b", "[U+009B]"},
      {"right-to-left override",
       "txt.\xe2\x80\xae"
       "exe",
       "txt.[U+202E]exe"},
      {"isolates", "\xe2\x81\xa6x\xe2\x81\xa9", "[U+2066]x[U+2069]"},
      {"zero width", "pay\xe2\x80\x8bpal", "pay[U+200B]pal"},
      {"line separators", "\xe2\x80\xa8\xe2\x80\xa9", "[U+2028][U+2029]"},
      {"tags", "\xf3\xa0\x81\x81", "[U+E0041]"},
      {"byte order mark, noncharacter", "\xef\xbb\xbf\xef\xbf\xbf", "[U+FEFF][U+FFFF]"},
      {"not UTF-8", "a\xff\xc3(", "a\xef\xbf\xbd\xef\xbf\xbd("},
      {"overlong, surrogate", "\xc0\xaf\xed\xa0\x80",
       "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
      {"cut off", "\xe2\x80", "\xef\xbf\xbd\xef\xbf\xbd"},
  };
  for (const auto& row : rows) EXPECT_EQ(visible(row.text), row.shown) << row.what;
}

TEST(page_text, long_texts_are_cut_between_characters_and_say_so) {
  EXPECT_EQ(visible("abcdef", 6), "abcdef");
  EXPECT_EQ(visible("abcdef", 4), "abcd [2 bytes more]");
  EXPECT_EQ(visible("ab\xc3\xbc"
                    "cd",
                    3),
            "ab [4 bytes more]");
  EXPECT_EQ(visible(std::string(5000, 'x'), 10), "xxxxxxxxxx [4,990 bytes more]");
}

TEST(page_text, html_and_json_keep_texts_in_their_place) {
  const std::string text = "</script><b a='x' b=\"y\">&amp;\\\n";
  std::string html, json;
  append_html(html, text);
  append_json(json, text);
  EXPECT_EQ(html, "&lt;/script&gt;&lt;b a=&#39;x&#39; b=&quot;y&quot;&gt;&amp;amp;\\\n");
  EXPECT_EQ(json, "\"\\u003c/script\\u003e\\u003cb a='x' b=\\\"y\\\"\\u003e\\u0026amp;\\\\\\n\"");
  EXPECT_EQ(json_bytes(text), json.size());
}

TEST(page_text, grouped) {
  EXPECT_EQ(grouped(0), "0");
  EXPECT_EQ(grouped(999), "999");
  EXPECT_EQ(grouped(1000), "1,000");
  EXPECT_EQ(grouped(1234567), "1,234,567");
}

}  // namespace
}  // namespace zanvik::testing
