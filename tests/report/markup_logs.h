// Logs in which every field that a question reads holds the same text, for markup that must stay
// text.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "log_builder.h"
#include "questions/questions.h"

namespace zanvik::testing {

inline constexpr const char* attack_text =
    "</script><script>ran=1</script><img src=x onerror=ran=2>\"'&lt;\xe2\x80\xae\x01]]>-->";
// As the page shows it.
inline constexpr const char* attack_shown =
    "</script><script>ran=1</script><img src=x onerror=ran=2>\"'&lt;[U+202E]\xe2\x90\x81]]>-->";

// An event of this source.
inline event markup_event(const question_source& source) {
  const std::string attack = attack_text;
  event made{.event_id = source.event_id,
             .provider = std::string(source.provider),
             .channel = attack,
             .computer = attack};
  const std::string condition(source.when.substr(0, source.when.find_first_of("!=")));
  bool unnamed = false;
  for (const std::string_view field : source.fields) {
    for (std::string_view rest = field; !rest.empty();) {
      const std::string name(rest.substr(0, rest.find('|')));
      rest.remove_prefix(std::min(name.size() + 1, rest.size()));
      unnamed = unnamed || (name[0] == '#' && field.find('|') == field.npos);
      const bool is_device = name == condition && source.when.find("*USB*") != source.when.npos;
      if (name[0] == '@' || name[0] == '#') continue;
      made.data.push_back({name, slot::utf16(is_device ? attack + "USB" : attack)});
    }
  }
  if (unnamed) {
    made.form = payload_form::unnamed_event_data;
    for (int i = 0; i < 20; ++i) made.data.push_back({"", slot::utf16(attack)});
  }
  return made;
}

// One event of each source of each question.
inline std::vector<log_builder> markup_logs() {
  std::vector<log_builder> logs;
  chunk_builder records;
  std::uint64_t number = 0;
  for (const question& asked : questions()) {
    for (const question_source& source : asked.sources) {
      records.add(record(++number, markup_event(source)));
      if (number % 6 != 0) continue;
      logs.push_back(log_builder().chunk(records));
      records = chunk_builder();
    }
  }
  logs.push_back(log_builder().chunk(records));
  return logs;
}

}  // namespace zanvik::testing
