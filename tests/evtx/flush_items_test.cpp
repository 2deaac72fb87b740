// How the names, attributes, values and references of one element become fields, with names that
// records of Windows have.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "evtx/bxml/bxml_decoder.h"

namespace zanvik {
namespace {

using fields_seen = std::map<std::string, std::string>;
using items = std::vector<element_item>;

fields_seen flushed(const std::vector<items>& elements, bool no_slots) {
  field_map fields;
  data_counters counters;
  for (items element : elements) {
    flush_items(element, fields, counters, no_slots);
    EXPECT_TRUE(element.empty());
  }
  fields_seen seen;
  for (const auto& [name, value] : fields) seen.emplace(name, value.text);
  return seen;
}

// Words: 1 element, 0x41 element with attributes, 6 attribute, 5 value, 0x15 second value,
// 8 and 9 references; 0x100 in a data section, 0x200 chained.
TEST(flush_items, names_fields_by_the_shape_of_the_element) {
  const struct {
    const char* reason;
    std::vector<items> elements;
    fields_seen fields;
    bool no_slots = true;
  } rows[] = {
      {"content alone", {{{"Channel", 1}, {"System", 5}}}, {{"Channel", "System"}}},
      {"attribute and content",
       {{{"EventID", 0x41}, {"Qualifiers", 6}, {"0", 5}, {"4624", 0x15}}},
       {{"EventID", "4624"}, {"EventID Qualifiers", "0"}}},
      {"two attributes: the second value follows an attribute, not a value",
       {{{"Provider", 0x41}, {"Name", 0x46}, {"Disk", 5}, {"Guid", 6}, {"{1}", 5}}},
       {{"Provider Name", "Disk"}, {"Provider Guid", "{1}"}}},
      {"a name that comes again is numbered from 1",
       {{{"Level", 1}, {"4", 5}}, {{"Level", 1}, {"3", 5}}, {{"Level", 1}, {"2", 5}}},
       {{"Level", "4"}, {"Level [1]", "3"}, {"Level [2]", "2"}}},
      {"line ends are written out, but not in the content beside an attribute",
       {{{"Text", 1}, {"a\r\nb\nc", 5}}, {{"Note", 0x41}, {"Id", 6}, {"1\r", 5}, {"a\nb", 0x15}}},
       {{"Text", "a[CRLF]b[LF]c"}, {"Note", "a\nb"}, {"Note Id", "1[CR]"}}},
      {"a chain is joined, known entities become their characters",
       {{{"Text", 1}, {"a", 0x205}, {"&lt;", 0x249}, {"b", 0x205}, {"&amp;", 0x209}}},
       {{"Text", "a<b&"}}},
      {"other references stay, a character's without its semicolon",
       {{{"Text", 1}, {"&gt;", 0x209}, {"&quot;", 0x209}, {"&#8364", 0x208}, {"&amp;", 0x205}}},
       {{"Text", ">&quot;&#8364&amp;"}}},
      {"a chain's name is padded to two characters, not bytes",
       {{{"T", 1}, {"a", 0x205}, {"&amp;", 0x209}}, {{"\xc3\xa4", 1}, {"b", 0x205}, {"c", 0x205}}},
       {{"0T", "a&"}, {"0\xc3\xa4", "bc"}}},
      {"a chain of which nothing stands before",
       {{{"a", 0x205}, {"&amp;", 0x209}}},
       {{"corrupted_data", "a&"}}},
      {"a chain under a name that is taken is dropped",
       {{{"Text", 1}, {"a", 0x205}, {"b", 0x205}}, {{"Text", 1}, {"c", 0x205}, {"d", 0x205}}},
       {{"Text", "ab"}}},
      {"Data with a Name, numbered as they come",
       {{{"Data", 0x141}, {"Name", 0x106}, {"LogonType", 5}, {"3", 0x15}},
        {{"Data", 0x141}, {"Name", 0x106}, {"IpPort", 5}, {"0\n", 0x15}}},
       {{"01:LogonType", "3"}, {"02:IpPort", "0[LF]"}}},
      {"another element with a Name is paired like any",
       {{{"Value", 0x141}, {"Name", 0x106}, {"x", 5}, {"3", 0x15}}},
       {{"Value", "3"}, {"Value Name", "x"}}},
      {"numbers have two digits from the first",
       std::vector<items>(10, {{"A", 0x101}, {"x", 5}}),
       {{"01:A", "x"},
        {"02:A", "x"},
        {"03:A", "x"},
        {"04:A", "x"},
        {"05:A", "x"},
        {"06:A", "x"},
        {"07:A", "x"},
        {"08:A", "x"},
        {"09:A", "x"},
        {"10:A", "x"}}},
      {"Data with another value word is paired like any element",
       {{{"Data", 0x141}, {"Name", 0x106}, {"LogonType", 5}, {"3", 5}}},
       {{"Data LogonType", "3"}, {"Data ", "Name"}}},
      {"all plain Data gather in one field, others get the next number",
       {{{"Data", 0x101}, {"a", 5}}, {{"ProcessId", 0x101}, {"4", 5}}, {{"Data", 0x101}, {"b", 5}}},
       {{"01:Data", "a; b"}, {"02:ProcessId", "4"}}},
      {"Binary after no Data: an empty one, its size, its bytes in pairs",
       {{{"Binary", 0x101}, {"0102AB", 5}}},
       {{"01:Data", ""}, {"02:<unnamed>", "3"}, {"03:Binary", "01 02 AB "}}},
      {"Binary after Data",
       {{{"Data", 0x101}, {"a", 5}}, {{"Binary", 0x101}, {"01020", 5}}},
       {{"01:Data", "a"}, {"02:<unnamed>", "2"}, {"03:Binary", "01 02 0"}}},
      {"binaryData has pairs, too, but no size",
       {{{"binaryData", 0x101}, {"0102", 5}}},
       {{"01:binaryData", "01 02 "}}},
      {"with slots both are as they come",
       {{{"Binary", 0x101}, {"0102", 5}}, {{"binaryData", 0x101}, {"03", 5}}},
       {{"01:Binary", "0102"}, {"02:binaryData", "03"}},
       false},
      {"a chain in Data with a Name is named after the attribute's value",
       {{{"Data", 0x141}, {"Name", 0x106}, {"Path", 5}, {"a", 0x205}, {"&amp;", 0x349}}},
       {{"01:Path", "a&"}}},
      {"chains of plain Data gather, too",
       {{{"Data", 0x101}, {"a", 0x205}, {"&lt;", 0x309}}, {{"Data", 0x101}, {"b", 5}}},
       {{"01:Data", "a<; b"}}},
      {"a chain that reaches back to Data's first item is named after that",
       {{{"Data", 0x141}, {"a", 0x205}, {"&amp;", 0x309}}},
       {{"01:a", "&"}}},
      {"under another element such a chain has no name",
       {{{"User", 0x141}, {"a", 0x205}, {"&amp;", 0x309}}},
       {{"corrupted_data", "a&"}}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(flushed(row.elements, row.no_slots), row.fields) << row.reason;
  }
}

}  // namespace
}  // namespace zanvik
