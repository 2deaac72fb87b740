#include "case/clean_text.h"

#include <gtest/gtest.h>

namespace zanvik {
namespace {

TEST(clean_text, is_utf8_that_every_reader_sees_to_its_end) {
  using namespace std::string_view_literals;
  struct text_row {
    std::string_view in, out;
    const char* why;
  };
  const text_row rows[] = {
      {"", "", "nothing"},
      {"a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"sv, "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"sv,
       "1 to 4 bytes"},
      {"Security\0x"sv, "Security\xef\xbf\xbdx"sv, "a NUL would end it"},
      {"a\x80z"sv, "a\xef\xbf\xbdz"sv, "no lead byte"},
      {"a\xe2\x82"sv, "a\xef\xbf\xbd\xef\xbf\xbd"sv, "cut"},
      {"\xc0\xaf"sv, "\xef\xbf\xbd\xef\xbf\xbd"sv, "overlong"},
      {"\xe0\x80\xaf"sv, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"sv, "overlong"},
      {"\xed\xa0\x80"sv, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"sv, "a surrogate"},
      {"\xf4\x90\x80\x80"sv, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"sv,
       "beyond Unicode"},
      {"\xc3"
       "A"sv,
       "\xef\xbf\xbd"
       "A"sv,
       "the next character stays"},
  };
  std::string scratch;
  for (const text_row& row : rows) {
    EXPECT_EQ(clean_text(row.in, scratch), row.out) << row.why;
    EXPECT_EQ(is_clean_text(row.in), row.in == row.out) << row.why;
  }
}

}  // namespace
}  // namespace zanvik
