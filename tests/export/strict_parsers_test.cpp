// The parsers that the forms are held against refuse what common readers refuse.
#include "reference/strict_parsers.h"

#include <gtest/gtest.h>

namespace zanvik::testing {
namespace {

TEST(strict_parsers, json_lines) {
  EXPECT_EQ(fault_in_json_lines(R"({"a":[1,-0.5e+3,"x\u00e9\n"],"b":{"c":null},"d":true})"
                                "\n{}\n"),
            "");
  for (const char* bad :
       {"{}", "[]\n", "{\"a\":1,\"a\":2}\n", "{\"a\":01}\n", "{\"a\":}\n", "{\"a\":[1,]}\n",
        "{\"a\":\"\t\"}\n", "{\"a\":\"\\x\"}\n", "{\"a\":\"\xff\"}\n", "{\"a\":\"\xed\xa0\x80\"}\n",
        "{\"a\":nul}\n", "{\"a\":1}}\n", "{\"a\":\"\n"}) {
    EXPECT_NE(fault_in_json_lines(bad), "") << bad;
  }
}

TEST(strict_parsers, xml) {
  const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  EXPECT_EQ(
      fault_in_xml(head + "<a>\n<?p x=\"1\"?><b xmlns:q=\"r\" c=\"&lt;&#13;\">]]&gt;</b></a>\n"),
      "");
  for (const char* bad :
       {"", "<a>\n", "<a></b>\n", "<a b=\"1\" b=\"2\"/>\n", "<a>&odd;</a>\n", "<a>\x01</a>\n",
        "<a b=\"<\"/>\n", "<a b=\"\n\"/>\n", "<a>]]></a>\n", "<a/><b/>\n", "<1/>\n", "<q:a/>\n",
        "<a><?xml ?></a>\n", "<a>\xef\xbf\xbf</a>\n", "<a>&#0;</a>\n", "<a b=1/>\n"}) {
    EXPECT_NE(fault_in_xml(head + bad), "") << bad;
  }
}

TEST(strict_parsers, csv) {
  EXPECT_EQ(fault_in_csv("a,\"b\"\"\n,\",\nx,\"\",y\n", 3), "");
  for (const char* bad :
       {"a,b\n", "a,b,c,d\n", "a,b,c", "a,b\"x,c\n", "a,\"b\"x,c\n", "a,b,\"c\n", "a,b,\xff\n"}) {
    EXPECT_NE(fault_in_csv(bad, 3), "") << bad;
  }
}

}  // namespace
}  // namespace zanvik::testing
