#include "sigma/rule_reader.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {

rule_level level_of(std::string_view name) {
  const auto found =
      std::find(level_names.begin() + 1, level_names.end(), to_lower(std::string(name)));
  return found == level_names.end() ? rule_level::none
                                    : static_cast<rule_level>(found - level_names.begin());
}

namespace {

std::vector<std::string> texts_of(const yaml_node* node) {
  std::vector<std::string> out;
  if (node == nullptr) return out;
  if (node->is_text()) out.push_back(node->text);
  for (const yaml_node& item : node->items) {
    if (item.is_text() && node->is_list()) out.push_back(item.text);
  }
  return out;
}

const yaml_node& needed(const yaml_node& map, std::string_view key) {
  const yaml_node* const value = map.find(key);
  if (value == nullptr) throw rule_problem{map.line, "'" + std::string(key) + "' is missing"};
  return *value;
}

// The expression of a search identifier: maps require all of their fields, lists any item.
class identifier_reader {
 public:
  identifier_reader(const placeholder_values& placeholders, rule& out)
      : placeholders_(placeholders), rule_(out) {}

  expression read(const yaml_node& node) {
    if (!node.is_list()) return item(node);
    if (node.items.empty()) throw rule_problem{node.line, "a search identifier is empty"};
    std::vector<expression> parts;
    for (const yaml_node& one : node.items) {
      if (one.is_list()) throw rule_problem{one.line, "a list stands in a list"};
      parts.push_back(item(one));
    }
    return expression::join(expression::kind::any_of, std::move(parts));
  }

 private:
  expression item(const yaml_node& node) {
    // A text without a field is a keyword.
    if (!node.is_map()) return field("", node);
    if (node.items.empty()) throw rule_problem{node.line, "a search identifier is empty"};
    std::vector<expression> parts;
    for (std::size_t i = 0; i < node.items.size(); ++i) {
      parts.push_back(field(node.keys[i], node.items[i]));
    }
    return expression::join(expression::kind::all_of, std::move(parts));
  }

  expression field(const std::string& key, const yaml_node& value) {
    expression out = read_field(key, value, placeholders_, rule_.tests);
    for (; counted_ < rule_.tests.size(); ++counted_) {
      const auto& regex = rule_.tests[counted_].expression;
      if (regex) rule_.regex_bytes += regex->compiled_bytes();
    }
    if (rule_.regex_bytes > limits::rule_regex_bytes) {
      throw rule_problem{value.line, "the regular expressions are too large together"};
    }
    return out;
  }

  const placeholder_values& placeholders_;
  rule& rule_;
  std::size_t counted_ = 0;  // of its tests
};

void read_log_source(const yaml_node& document, rule_log_source& out) {
  const yaml_node& source = needed(document, "logsource");
  if (!source.is_map()) throw rule_problem{source.line, "'logsource' is no map"};
  out.category = to_lower(std::string(source.text_of("category")));
  out.product = to_lower(std::string(source.text_of("product")));
  out.service = to_lower(std::string(source.text_of("service")));
  if (out.category.empty() && out.product.empty() && out.service.empty()) {
    throw rule_problem{source.line, "'logsource' names neither category, product nor service"};
  }
}

void read_meta(const yaml_node& document, rule& out) {
  out.title = document.text_of("title");
  if (out.title.empty()) out.title = document.text_of("name");
  out.id = document.text_of("id");
  out.name = document.text_of("name");
  out.status = document.text_of("status");
  out.author = document.text_of("author");
  out.license = document.text_of("license");
  out.date = document.text_of("date");
  out.modified = document.text_of("modified");
  out.level = level_of(document.text_of("level"));
  out.tags = texts_of(document.find("tags"));
}

void read_body(const yaml_node& document, const placeholder_values& placeholders, rule& out) {
  if (const yaml_node* node = document.find("correlation")) {
    out.what = rule::kind::correlation;
    read_correlation(*node, out.correlation);
    // The first of the two places where it may be.
    if (document.text_of("generate") == "true") out.correlation.generate = true;
    return;
  }
  const std::string_view taxonomy = document.text_of("taxonomy");
  if (!taxonomy.empty() && !equal_nocase(taxonomy, "sigma")) {
    throw rule_problem{document.line, "taxonomy '" + std::string(taxonomy) + "' is not known",
                       true};
  }
  const yaml_node* const filter = document.find("filter");
  if (filter != nullptr) out.what = rule::kind::filter;
  read_log_source(document, out.source);
  read_detection(filter != nullptr ? *filter : needed(document, "detection"), placeholders, out);
  if (filter != nullptr) {
    out.rules = texts_of(filter->find("rules"));
    if (out.rules.empty()) throw rule_problem{filter->line, "the filter names no rules"};
  }
}

}  // namespace

void read_detection(const yaml_node& detection, const placeholder_values& placeholders, rule& out) {
  if (!detection.is_map()) throw rule_problem{detection.line, "the detection is no map"};
  identifier_reader reader(placeholders, out);
  std::vector<named_expression> names;
  for (std::size_t i = 0; i < detection.items.size(); ++i) {
    const std::string& name = detection.keys[i];
    if (name == "condition" || name == "timeframe") continue;
    if (name == "rules" && out.what == rule::kind::filter) continue;
    names.push_back({name, reader.read(detection.items[i])});
  }
  const yaml_node& condition = needed(detection, "condition");
  const std::vector<std::string> texts = texts_of(&condition);
  if (texts.empty())
    throw rule_problem{condition.line, "the condition is neither a text nor a list"};
  std::vector<expression> parts(texts.size());
  std::size_t steps = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string error = parse_condition(texts[i], names, parts[i]);
    if (!error.empty()) {
      const bool aggregates = error.find("obsolete") != std::string::npos;
      throw rule_problem{condition.line, "condition: " + error, aggregates};
    }
    steps += parts[i].size();
    if (steps > limits::rule_steps) throw rule_problem{condition.line, "too many conditions"};
  }
  out.condition = expression::join(expression::kind::any_of, std::move(parts));
}

rule read_rule(const yaml_node& document, std::string_view file,
               const placeholder_values& placeholders) {
  rule out;
  out.file = file;
  out.line = document.line;
  try {
    if (!document.is_map()) throw rule_problem{document.line, "the document is no map"};
    read_meta(document, out);
    read_body(document, placeholders, out);
  } catch (const rule_problem& problem) {
    out.problem = problem.why;
    out.problem_line = problem.line;
    out.unsupported = problem.unsupported;
    out.tests.clear();
    out.condition = {};
  }
  return out;
}

}  // namespace zanvik::sigma
