// Sigma rules, the compiled matchers against the plain way.
//
// The first byte chooses. Even: the input is lines, the text of a rule file up to a line "%%", then
// the fields of events as NAME=VALUE, with an empty line behind each event. Odd: rules and events
// are made of the bytes, of an alphabet of their own.
#include "fuzz_target.h"
#include "reference/random_rules.h"
#include "sigma/rule_set.h"

namespace zanvik::fuzz {
namespace {

sigma::rule_set load(const std::string& text) {
  static const sigma::log_source_table sources;
  sigma::rule_choice choice;
  choice.placeholders = {{"name", "a*"}, {"name", "b"}};
  sigma::rule_set set;
  sigma::load_rule_texts({{"rules.yml", text}}, choice, sources, set);
  for (const sigma::known_rule& known : set.rules) {
    require(known.state == sigma::rule_state::runs || !known.reason.empty(),
            "what does not run has a reason");
  }
  return set;
}

void require_ways_agree(sigma::all_ways& ways, const sigma::made_event& event) {
  const auto answer = ways.match(event);
  require(answer.agree(), "the compiled matchers find what the plain way finds");
}

void run_text(input& in) {
  std::string text;
  while (!in.rest().empty()) {
    const std::string_view line = in.take_line();
    if (line == "%%") break;
    text.append(line).append(1, '\n');
  }
  const sigma::rule_set set = load(text);
  if (set.running() == 0) return;
  sigma::all_ways ways(set);
  if (!ways.comparable()) return;
  sigma::made_event event;
  while (!in.rest().empty()) {
    const std::string_view line = in.take_line();
    const std::size_t equal = line.find('=');
    if (equal != line.npos) {
      event.emplace_back(std::string(line.substr(0, equal)), std::string(line.substr(equal + 1)));
    } else {
      require_ways_agree(ways, event);
      event.clear();
    }
  }
  require_ways_agree(ways, event);
}

void run_alphabet(input& in) {
  sigma::random_rules made([&in] { return std::uint32_t{in.take<std::uint8_t>()}; });
  const std::size_t rules = 1 + in.take<std::uint8_t>() % 8;
  std::string text;
  for (std::size_t i = 0; i < rules; ++i) text += made.rule();
  const sigma::rule_set set = load(text);
  require(set.running() == rules, "rules of the alphabet run");
  sigma::all_ways ways(set);
  for (std::size_t i = 0; i < 16 && !in.rest().empty(); ++i) {
    require_ways_agree(ways, made.event());
  }
}

}  // namespace

ZANVIK_FUZZ_TARGET(sigma) {
  const exact_bytes exact(bytes);
  input in(exact.span());
  if (in.take<std::uint8_t>() % 2 == 0) {
    run_text(in);
  } else {
    run_alphabet(in);
  }
}

}  // namespace zanvik::fuzz
