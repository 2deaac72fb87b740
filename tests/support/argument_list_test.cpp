#include "support/argument_list.h"

#include <gtest/gtest.h>

namespace zanvik {
namespace {

TEST(argument_list, values_are_taken_with_their_option) {
  struct row {
    const char* reason;
    argument_list list;
    bool taken;
    std::string value;
    argument_list left;
  };
  const row rows[] = {
      {"any case", {"p", "-Out", "f"}, true, "f", {"p"}},
      {"the first of two", {"p", "-out", "f", "-out", "g"}, true, "f", {"p", "-out", "g"}},
      {"a value that looks like an option", {"p", "-out", "-csv"}, true, "-csv", {"p"}},
      {"the last place counts as absent", {"p", "-out"}, false, "", {"p", "-out"}},
      {"no abbreviation", {"p", "-ou", "f"}, false, "", {"p", "-ou", "f"}},
      {"the program's name is looked at too", {"-out", "f"}, true, "f", {}},
  };
  for (const row& r : rows) {
    argument_list list = r.list;
    std::string value;
    EXPECT_EQ(take_value_option("-out", value, list), r.taken) << r.reason;
    EXPECT_EQ(value, r.value) << r.reason;
    EXPECT_EQ(list, r.left) << r.reason;
  }
}

TEST(argument_list, flags_are_taken_once_or_kept) {
  argument_list list = {"p", "-CSV", "-csv"};
  EXPECT_TRUE(take_flag_option("-csv", list, true));
  EXPECT_EQ(list.size(), 3u);
  EXPECT_TRUE(take_flag_option("-csv", list));
  EXPECT_EQ(list, (argument_list{"p", "-csv"}));
  EXPECT_FALSE(take_flag_option("-cs", list));
}

TEST(argument_list, looking_from_an_index_passes_over_what_stands_before) {
  const argument_list list = {"-append", "x"};
  EXPECT_TRUE(has_option_from("-APPEND", list, 0));
  EXPECT_FALSE(has_option_from("-append", list, 1));
  EXPECT_FALSE(has_option_from("-append", list, 9));
}

TEST(argument_list, only_arguments_with_a_blank_are_wrapped) {
  EXPECT_EQ(command_line_text({"p", "-log", "a | b", "", "x\ty"}, '\''), "p -log 'a | b'  x\ty");
}

}  // namespace
}  // namespace zanvik
