#include "verbs/selection_text.h"

#include <algorithm>
#include <vector>

#include "events/event_value.h"

namespace zanvik {
namespace {

void add(std::string& text, std::string_view option, std::string_view value = {}) {
  if (!text.empty()) text += ' ';
  text += "--";
  text += option;
  if (!value.empty()) text.append(" ").append(value);
}

// In one order, whatever the order on the command line.
void add_all(std::string& text, std::string_view option, std::vector<std::string> values) {
  std::sort(values.begin(), values.end());
  for (const std::string& value : values) add(text, option, value);
}

// "1,5,10-20"
template <std::size_t size>
std::string ranges(const std::bitset<size>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    if (!numbers[i]) continue;
    const std::size_t first = i;
    while (i + 1 < size && numbers[i + 1]) ++i;
    text += (text.empty() ? "" : ",") + std::to_string(first);
    if (i != first) text += "-" + std::to_string(i);
  }
  return text.empty() ? "none" : text;
}

std::string iso_text(std::uint64_t filetime) {
  char text[40];
  return {text, write_iso_time(text, filetime)};
}

}  // namespace

std::string selection_text(const log_options& options) {
  const event_conditions& take = options.conditions;
  std::string text;
  if (take.event_ids) add(text, "event-id", ranges(*take.event_ids));
  add_all(text, "channel", take.channels);
  add_all(text, "provider", take.providers);
  add_all(text, "computer", take.computers);
  add_all(text, "user", take.users);
  if (take.from != 0) add(text, "from", iso_text(take.from));
  if (take.to != ~std::uint64_t{0}) add(text, "to", iso_text(take.to));
  std::vector<std::string> where;
  for (const where_condition& condition : take.where) {
    where.push_back(condition.name + (condition.negated ? "!=" : "=") + condition.pattern);
  }
  add_all(text, "where", std::move(where));
  add_all(text, "contains", take.contains);
  if (take.levels) add(text, "level", ranges(*take.levels));
  if (options.slack) add(text, "slack");
  if (options.carve.what() == carve_what::everything) add(text, "carve");
  if (options.carve.what() == carve_what::free_space) add(text, "carve=unallocated");
  return text;
}

}  // namespace zanvik
