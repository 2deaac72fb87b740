// Holds the hunter against the plain way of matching, on rules and logs that are at hand:
//
//   hunt_two_ways RULES LOG_OR_FOLDER...
//
// Prints each event on which the two differ, and a line of counts; status 1 when any differs. The
// plain way asks every rule that an event's log source has, so this takes its time.
#include <cstdio>
#include <deque>
#include <map>

#include "reference/plain_rules.h"
#include "sigma/event_names.h"
#include "base/fold_case.h"
#include "sigma/sigma.h"
#include "source/log_events.h"

namespace zanvik::sigma {
namespace {

// An event's values, each as a text of its own.
class viewed_fields : public event_fields {
 public:
  explicit viewed_fields(const event_view& event) : event_(event) {}

  const field_values& values(std::string_view name) const override {
    const auto [it, fresh] = known_.try_emplace(std::string(name));
    if (!fresh) return it->second;
    for (const std::uint32_t field : fields_of_name(event_.shape(), name)) {
      event_value value = event_.value(field);
      if (event_.shape().fields[field].parts.size() != 1) {
        std::string scratch;
        add(it->second, std::string(event_.text(static_cast<std::int32_t>(field), scratch)), false);
      } else if (value.is_array()) {
        for (event_value item; next_item(value, item);) add_value(it->second, item);
      } else {
        add_value(it->second, value);
      }
    }
    return it->second;
  }

 private:
  void add_value(field_values& out, const event_value& value) const {
    std::string text;
    append_text(text, value);
    add(out, std::move(text), value.absent());
  }
  void add(field_values& out, std::string text, bool null) const {
    const std::string& kept = texts_.emplace_back(std::move(text));
    out.push_back({kept, texts_.emplace_back(folded(kept)), null});
  }

  const event_view& event_;
  mutable std::map<std::string, field_values> known_;
  mutable std::deque<std::string> texts_;
};

class comparison : public event_sink {
 public:
  explicit comparison(const rule_set& set)
      : set_(set), rules_(set), hunter_(rules_, [this](const auto&, auto found) {
          quick_.assign(found.begin(), found.end());
        }) {}

  void on_event(const event_view& event) override {
    ++events;
    quick_.clear();
    hunter_.on_event(event);
    const std::vector<std::uint32_t> plain = plain_matches(event);
    matches += plain.size();
    if (plain == quick_) return;
    ++differences;
    std::printf("%s, offset %llu: %zu rules match, %zu were found\n", event.source().path.c_str(),
                static_cast<unsigned long long>(event.header().file_offset), plain.size(),
                quick_.size());
  }

  std::uint64_t events = 0, matches = 0, differences = 0;

 private:
  std::vector<std::uint32_t> plain_matches(const event_view& event) {
    std::string scratch;
    const std::string channel = folded(channel_of(event, scratch));
    const std::string provider = folded(event.text(system_member::provider_name, scratch));
    const auto id = event_id_of(event.text(system_member::event_id, scratch));
    const viewed_fields fields(event);
    std::vector<std::uint32_t> out;
    for (std::uint32_t r = 0; r < set_.rules.size(); ++r) {
      const known_rule& known = set_.rules[r];
      if (known.state != rule_state::runs || known.content.what != rule::kind::detection) continue;
      for (const event_source& source : known.events) {
        if (concerns(source, channel, provider, id) &&
            plain_match(known.content, source, fields, scratch_)) {
          out.push_back(r);
          break;
        }
      }
    }
    return out;
  }

  const rule_set& set_;
  compiled_rules rules_;
  hunter hunter_;
  std::vector<std::uint32_t> quick_;
  test_scratch scratch_;
};

int run(int argc, char** argv) {
  rule_set set;
  const std::string error = load_rules({argv[1]}, {}, log_source_table(), set);
  if (!error.empty()) {
    std::printf("%s\n", error.c_str());
    return 2;
  }
  comparison sink(set);
  log_event_reader reader(sink, true);
  log_finder finder([&](found_log& log) { (void)reader.read(log); },
                    [](const std::string&, const std::string&) {});
  for (int i = 2; i < argc; ++i) finder.find(argv[i]);
  std::printf("%zu rules, %llu events, %llu matches, %llu differences\n", set.running(),
              static_cast<unsigned long long>(sink.events),
              static_cast<unsigned long long>(sink.matches),
              static_cast<unsigned long long>(sink.differences));
  return sink.differences == 0 && sink.events != 0 ? 0 : 1;
}

}  // namespace
}  // namespace zanvik::sigma

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  return zanvik::sigma::run(argc, argv);
}
