#include "sigma/rule_set.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>
#include <unordered_set>

#include "base/fileio.h"
#include "base/text.h"
#include "sigma/fold_case.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {

std::string_view name_of(rule_state state) {
  switch (state) {
    case rule_state::runs:
      return "runs";
    case rule_state::not_applicable:
      return "not applicable";
    case rule_state::unsupported:
      return "not supported";
    case rule_state::broken:
      return "broken";
    default:
      return "not wanted";
  }
}

std::size_t rule_set::running() const {
  return static_cast<std::size_t>(std::count_if(rules.begin(), rules.end(), [](const auto& r) {
    return r.state == rule_state::runs && r.content.what == rule::kind::detection;
  }));
}

std::ptrdiff_t rule_set::find(const std::string& id_or_name) const {
  const auto found = by_name.find(id_or_name);
  return found == by_name.end() ? -1 : static_cast<std::ptrdiff_t>(found->second);
}

namespace {

namespace fs = std::filesystem;

// What one file yields, before rules meet one another.
using file_rules = std::vector<rule>;

// Stands for a file, or for the rest of one, that cannot be read.
rule broken_file(const std::string& path, std::string problem, std::size_t line) {
  rule out;
  out.file = path;
  out.problem = std::move(problem);
  out.line = out.problem_line = line;
  return out;
}

file_rules read_text(const std::string& path, const std::string& text,
                     const placeholder_values& placeholders) {
  file_rules out;
  for (const yaml_piece& piece : yaml_pieces(text)) {
    if (out.size() >= limits::rules_of_file) {
      out.push_back(broken_file(path, "too many rules in one file", piece.line));
      break;
    }
    const yaml_file file = read_yaml(std::string(piece.text), piece.line);
    for (const yaml_node& document : file.documents) {
      if (document.what == yaml_node::kind::null) continue;  // an empty document
      out.push_back(read_rule(document, path, placeholders));
    }
    if (!file.error.empty()) out.push_back(broken_file(path, file.error, file.error_line));
  }
  return out;
}

file_rules read_file(const std::string& path, const placeholder_values& placeholders) {
  uni::fileio file;
  std::vector<std::byte> bytes;
  std::string problem;
  if (!file.open(path)) {
    problem = "cannot be opened";
  } else if (file.get_size() > limits::rule_file_bytes) {
    problem = "is too large for a rule";
  } else if (file.get_size() != 0 && !file.read(bytes, file.get_size(), 0)) {
    problem = "cannot be read";
  }
  if (problem.empty()) {
    return read_text(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                     placeholders);
  }
  return {broken_file(path, problem, 1)};
}

// The rule files below `path`, itself one if it is a file. False when there is nothing.
bool list_files(const std::string& path, std::vector<std::string>& out,
                std::vector<std::string>& messages) {
  std::error_code error;
  if (!fs::is_directory(path, error)) {
    if (!fs::exists(path, error)) return false;
    out.push_back(path);
    return true;
  }
  std::vector<std::string> found;
  for (fs::recursive_directory_iterator
           it(path, fs::directory_options::skip_permission_denied, error),
       end;
       !error && it != end && found.size() < limits::rule_files; it.increment(error)) {
    const auto extension = it->path().extension();
    std::error_code ignored;
    if ((extension == ".yml" || extension == ".yaml") && it->is_regular_file(ignored)) {
      found.push_back(it->path().string());
    }
  }
  if (error) messages.push_back(path + ": cannot be read to the end: " + error.message());
  if (found.size() == limits::rule_files) messages.push_back(path + ": too many rule files");
  std::sort(found.begin(), found.end());
  out.insert(out.end(), found.begin(), found.end());
  return true;
}

// Folders may be given that lie in one another; a rule is there once all the same.
void drop_repeated_files(std::vector<std::string>& files) {
  std::set<std::pair<std::uint64_t, std::uint64_t>> known;
  std::erase_if(files, [&](const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !known.emplace(status.st_dev, status.st_ino).second;
  });
}

std::vector<file_rules> read_files(const std::vector<std::string>& files,
                                   const placeholder_values& placeholders) {
  std::vector<file_rules> out(files.size());
  const std::size_t threads = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 4);
  const auto work = [&](std::size_t first) {
    for (std::size_t i = first; i < files.size(); i += threads) {
      out[i] = read_file(files[i], placeholders);
    }
  };
  std::vector<std::thread> helpers;
  if (files.size() > 64) {
    for (std::size_t t = 1; t < threads; ++t) helpers.emplace_back(work, t);
    work(0);
  } else {
    for (std::size_t t = 0; t < threads; ++t) work(t);
  }
  for (std::thread& helper : helpers) helper.join();
  return out;
}

bool is_wanted(const rule& r, const rule_choice& choice) {
  const auto has = [](const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
  };
  if (r.level < choice.min_level || (!choice.statuses.empty() && !has(choice.statuses, r.status)) ||
      std::any_of(choice.excluded_ids.begin(), choice.excluded_ids.end(),
                  [&](const std::string& id) { return equal_nocase(id, r.id); })) {
    return false;
  }
  if (choice.tags.empty()) return true;
  for (const std::string& wanted : choice.tags) {
    text_pattern pattern = text_pattern::parse(wanted);
    pattern.fold();
    for (const std::string& tag : r.tags) {
      if (pattern.matches(folded(tag))) return true;
    }
  }
  return false;
}

void set_state(known_rule& known, rule_state state, std::string reason) {
  known.state = state;
  known.reason = std::move(reason);
}

void classify(known_rule& known, const rule_choice& choice, const log_source_table& sources) {
  const rule& r = known.content;
  if (!r.problem.empty()) {
    set_state(known, r.unsupported ? rule_state::unsupported : rule_state::broken, r.problem);
    return;
  }
  if (r.what != rule::kind::correlation) {
    std::string reason;
    known.events = sources.find(r.source, reason);
    if (known.events.empty()) {
      set_state(known, rule_state::not_applicable, reason);
      return;
    }
  }
  if (r.what != rule::kind::filter && !is_wanted(r, choice)) {
    // Correlations may still stand on it.
    known.reported = false;
    set_state(known, rule_state::not_wanted, "left out by the options");
  }
}

// Puts the filter into a rule: it suppresses what its condition matches.
void apply_filter(const rule& filter, rule& target) {
  const std::size_t first = target.tests.size();
  target.tests.insert(target.tests.end(), filter.tests.begin(), filter.tests.end());
  const auto moved = [first](const auto& self, expression e) -> expression {
    if (e.what == expression::kind::test) e.test += first;
    for (expression& part : e.parts) part = self(self, std::move(part));
    return e;
  };
  expression& condition = target.condition;
  if (condition.what != expression::kind::all_of) {
    condition = {expression::kind::all_of, {std::move(condition)}, 0};
  }
  // Beside one another: many filters may be on one rule, and what evaluates is recursive.
  condition.parts.push_back(expression::negate(moved(moved, filter.condition)));
}

bool source_fits(const rule_log_source& filter, const rule_log_source& rule_source) {
  const auto fits = [](const std::string& wanted, const std::string& has) {
    return wanted.empty() || wanted == has;
  };
  return fits(filter.category, rule_source.category) && fits(filter.product, rule_source.product) &&
         fits(filter.service, rule_source.service);
}

void apply_filters(rule_set& set) {
  std::size_t tests = 0;  // copied into rules
  for (known_rule& filter : set.rules) {
    if (filter.content.what != rule::kind::filter || filter.state != rule_state::runs) continue;
    for (const std::string& name : filter.content.rules) {
      const std::ptrdiff_t target = set.find(name);
      rule* const content =
          target < 0 ? nullptr : &set.rules[static_cast<std::size_t>(target)].content;
      std::string why;
      if (content == nullptr) {
        why = "no rule " + name;
      } else if (content->what != rule::kind::detection || !content->problem.empty()) {
        why = "no detection that runs: " + name;
      } else if (!source_fits(filter.content.source, content->source)) {
        why = "another log source: " + name;
      } else if ((tests += filter.content.condition.size()) > limits::filter_steps) {
        why = "too many filters before: " + name;
      } else {
        apply_filter(filter.content, *content);
      }
      if (!why.empty()) filter.reason += (filter.reason.empty() ? "" : ", ") + why;
    }
  }
}

// Whether all that a correlation stands on has been settled; what is missing ends it.
bool is_ready(const rule_set& set, known_rule& known, const std::vector<bool>& settled) {
  for (const std::string& name : known.content.correlation.rules) {
    const std::ptrdiff_t found = set.find(name);
    if (found < 0) {
      set_state(known, rule_state::broken, "there is no rule '" + name + "'");
      return true;
    }
    if (!settled[static_cast<std::size_t>(found)]) return false;
    const known_rule& base = set.rules[static_cast<std::size_t>(found)];
    if (base.content.what == rule::kind::filter) {
      set_state(known, rule_state::broken, "'" + name + "' is a filter");
      return true;
    }
    if (base.state != rule_state::runs && base.state != rule_state::not_wanted) {
      set_state(known, base.state, "rule '" + name + "' does not run");
      return true;
    }
  }
  return true;
}

// Settles correlations from below: those that stand on detections first. What is left then stands
// on itself.
void settle_correlations(rule_set& set) {
  std::vector<bool> settled(set.rules.size());
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    settled[i] = set.rules[i].content.what != rule::kind::correlation ||
                 !set.rules[i].content.problem.empty();
  }
  for (std::size_t depth = 0; depth < limits::correlation_depth; ++depth) {
    std::vector<std::size_t> ready;
    for (std::size_t i = 0; i < set.rules.size(); ++i) {
      if (!settled[i] && is_ready(set, set.rules[i], settled)) ready.push_back(i);
    }
    for (const std::size_t i : ready) {
      settled[i] = true;
      set.correlation_order.push_back(i);
    }
  }
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    if (!settled[i])
      set_state(set.rules[i], rule_state::broken,
                "correlations stand on themselves, or too many on one another");
  }
}

// Rules that correlations stand on run for them, and are reported on their own only where one of
// them says so.
void mark_bases(rule_set& set) {
  std::vector<bool> serves(set.rules.size()), generated(set.rules.size());
  // From above, as a correlation may be there for another one's sake only.
  for (auto i = set.correlation_order.rbegin(); i != set.correlation_order.rend(); ++i) {
    const known_rule& known = set.rules[*i];
    if (known.state != rule_state::runs) continue;
    for (const std::string& name : known.content.correlation.rules) {
      const auto base = static_cast<std::size_t>(set.find(name));
      serves[base] = true;
      if (known.content.correlation.generate) generated[base] = true;
      if (set.rules[base].state == rule_state::not_wanted) {
        set_state(set.rules[base], rule_state::runs, "");
        set.rules[base].reported = false;
      }
    }
  }
  for (std::size_t i = 0; i < set.rules.size(); ++i) {
    if (serves[i] && !generated[i]) set.rules[i].reported = false;
  }
}

// What all rules share is limited; which rules go without is a matter of their order.
void limit_shared(rule_set& set) {
  std::size_t regex_bytes = 0;
  std::unordered_set<std::string_view, keyed_text_hash> fields;
  for (known_rule& known : set.rules) {
    const rule& r = known.content;
    if (known.state != rule_state::runs) continue;
    if (regex_bytes + r.regex_bytes > limits::all_regex_bytes) {
      set_state(known, rule_state::unsupported, "the rules have too many regular expressions");
      continue;
    }
    regex_bytes += r.regex_bytes;
    for (const field_test& test : r.tests) {
      if (fields.size() >= limits::all_fields && !fields.contains(test.field)) {
        set_state(known, rule_state::unsupported, "the rules ask for too many fields");
      } else {
        fields.insert(test.field);
        fields.insert(test.other);
      }
    }
  }
}

void settle(std::vector<file_rules>&& files, const rule_choice& choice,
            const log_source_table& sources, rule_set& out) {
  for (file_rules& file : files) {
    for (rule& r : file) {
      known_rule known;
      known.content = std::move(r);
      classify(known, choice, sources);
      out.rules.push_back(std::move(known));
    }
  }
  out.files += files.size();
  for (std::size_t i = 0; i < out.rules.size(); ++i) {
    const rule& r = out.rules[i].content;
    // Of two rules with one ID, the first is meant.
    if (!r.id.empty()) out.by_name.emplace(r.id, i);
    if (!r.name.empty()) out.by_name.emplace(r.name, i);
  }
  limit_shared(out);
  apply_filters(out);
  settle_correlations(out);
  mark_bases(out);
  for (const known_rule& known : out.rules) {
    if (known.state != rule_state::broken) continue;
    const std::size_t line = std::max<std::size_t>(
        known.content.problem.empty() ? known.content.line : known.content.problem_line, 1);
    out.messages.push_back(
        printable_name(known.content.file + ":" + std::to_string(line) + ": " + known.reason));
  }
}

}  // namespace

std::string load_rules(const std::vector<std::string>& paths, const rule_choice& choice,
                       const log_source_table& sources, rule_set& out) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (!list_files(path, files, out.messages)) return "no such file or folder: " + path;
  }
  drop_repeated_files(files);
  settle(read_files(files, choice.placeholders), choice, sources, out);
  if (out.rules.empty()) return "there is no rule in " + paths.front();
  return {};
}

void load_rule_texts(const std::vector<std::pair<std::string, std::string>>& texts,
                     const rule_choice& choice, const log_source_table& sources, rule_set& out) {
  std::vector<file_rules> files;
  for (const auto& [name, text] : texts) {
    files.push_back(read_text(name, text, choice.placeholders));
  }
  settle(std::move(files), choice, sources, out);
}

}  // namespace zanvik::sigma
