// Rules from the documents of a file.
//
// A document that is not a sound rule still becomes a rule, with the problem and its line, so that
// it can be listed; nothing is dropped silently.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sigma/rule.h"
#include "sigma/yaml_text.h"

namespace zanvik::sigma {

// NAME and a value it stands for; a name may come more than once.
using placeholder_values = std::vector<std::pair<std::string, std::string>>;

rule read_rule(const yaml_node& document, std::string_view file,
               const placeholder_values& placeholders);

// A problem of a rule, with its line.
struct rule_problem {
  std::size_t line;
  std::string why;
  bool unsupported = false;  // sound, but more than can be done here
};

// The parts of the reader; each throws rule_problem, which read_rule catches.

// The map of search identifiers and `condition`; fills tests and condition.
void read_detection(const yaml_node& detection, const placeholder_values& placeholders, rule& out);
void read_correlation(const yaml_node& node, rule_correlation& out);
// The tests of a key `field|modifier|…` with its value, appended to `tests`.
expression read_field(const std::string& key, const yaml_node& value,
                      const placeholder_values& placeholders, std::vector<field_test>& tests);

}  // namespace zanvik::sigma
