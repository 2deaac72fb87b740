#include "verbs/report_rules.h"

#include <cstdio>
#include <map>

#include "sigma/correlation.h"
#include "sigma/sigma.h"
#include "verbs/log_options.h"

namespace zanvik {
namespace {

// "attack.t1059.001" is technique T1059.001; other tags say nothing about techniques.
std::string techniques_of(const sigma::rule& rule) {
  std::string out;
  for (const std::string& tag : rule.tags) {
    constexpr std::string_view prefix = "attack.t";
    if (!tag.starts_with(prefix) || tag.size() < prefix.size() + 4 || tag[8] < '0' ||
        tag[8] > '9') {
      continue;
    }
    if (!out.empty()) out += ", ";
    out += "T" + tag.substr(prefix.size());
  }
  return out;
}

class sigma_rules : public report_rules {
 public:
  sigma_rules(sigma::rule_set&& set, report_collector& collected)
      : set_(std::move(set)),
        collected_(collected),
        correlator_(set_),
        compiled_(set_),
        hunter_(compiled_, [this](const event_view& event, std::span<const std::uint32_t> found) {
          correlator_.begin_event();
          for (const std::uint32_t rule : found) take_match(event, rule);
        }) {
    for (const sigma::known_rule& known : set_.rules) {
      techniques_.push_back(techniques_of(known.content));
    }
  }

  void start_log() override {
    counts_.add(hunter_.counts(), logs_);
    ++logs_;
    hunter_.start_part();
  }
  void on_event(const event_view& event) override { hunter_.on_event(event); }

  std::string finish() override {
    counts_.add(hunter_.counts(), logs_);
    for (const sigma::correlation_match& match : correlator_.finish()) {
      std::string details = std::to_string(match.events) + " events";
      for (const auto& [field, value] : match.group) details += "; " + field + ": " + value;
      collected_.add_match(match.event.time, static_cast<std::uint32_t>(match.event.note),
                           matched(match.rule), details);
    }
    return problems();
  }

 private:
  matched_rule matched(std::size_t rule) const {
    const sigma::rule& content = set_.rules[rule].content;
    return {sigma::level_names[static_cast<std::size_t>(content.level)], content.title,
            techniques_[rule], content.id};
  }

  void take_match(const event_view& event, std::uint32_t rule) {
    if (set_.rules[rule].reported) collected_.add_match(event, matched(rule));
    if (correlator_.wants(rule)) correlator_.add(event, rule, logs_ - 1);
  }

  std::string problems() const {
    std::string out;
    const auto add = [&out](std::uint64_t count, const char* what) {
      if (count == 0) return;
      if (!out.empty()) out += "; ";
      out += std::to_string(count) + what;
    };
    add(correlator_.left_out(), " matches were too many for correlations and are left out");
    add(correlator_.not_worked_out().size(), " correlations have too many matches to look at");
    add(counts_.gave_up.size(), " rules reached the limit of a regular expression");
    return out;
  }

  const sigma::rule_set set_;
  report_collector& collected_;
  sigma::correlator correlator_;
  sigma::compiled_rules compiled_;
  sigma::hunter hunter_;
  sigma::hunt_counts counts_;
  std::vector<std::string> techniques_;
  std::uint64_t logs_ = 0;
};

}  // namespace

std::unique_ptr<report_rules> make_report_rules(const report_rule_options& options,
                                                report_collector& collected, std::string& problem) {
  sigma::rule_set set;
  sigma::rule_choice choice;
  choice.min_level = sigma::level_of(options.min_level);
  problem = sigma::load_rules(options.rules, choice, {}, set);
  for (const std::string& message : set.messages) {
    std::fprintf(stderr, "zanvik: %s\n", message.c_str());
  }
  if (problem.empty() && set.running() == 0) problem = "no rule runs; zanvik hunt --list says why";
  if (!problem.empty()) return nullptr;
  return std::make_unique<sigma_rules>(std::move(set), collected);
}

}  // namespace zanvik
