#include "commands/command_build.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/number_text.h"
#include "base/path_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "base/time_parse.h"
#include "base/time_value.h"
#include "options/argument_list.h"

namespace zanvik {
namespace {

// Calls `use` with the value of each `name`, as take_value_option would return them one after the
// other, and removes them from the list; in one pass, because a line may contain a million.
template <typename F>
void take_values(std::string_view name, argument_list& tokens, F&& use) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (i + 1 < tokens.size() && option_equal(tokens[i], name)) {
      use(std::move(tokens[++i]));
    } else {
      if (kept != i) tokens[kept] = std::move(tokens[i]);
      ++kept;
    }
  }
  tokens.resize(kept);
}

// The letters of the run's date order; empty if its format has none.
std::string_view date_order(const format_descriptor& descriptor) {
  const bool named = descriptor.flags & format_descriptor::month_name;
  if (descriptor.flags & format_descriptor::year_month_day) return named ? "YMonD" : "YMD";
  if (descriptor.flags & format_descriptor::month_day_year) return named ? "MonDY" : "MDY";
  if (descriptor.flags & format_descriptor::day_month_year) return named ? "DMonY" : "DMY";
  return {};
}

// A date, and after its first blank a time, as the run writes them.
std::optional<std::uint64_t> time_of(std::string_view text, const format_descriptor& descriptor) {
  const auto blank = text.find(' ');
  const auto clock = blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
  const std::string_view order = date_order(descriptor);
  qx::_windows_systemtime parts;
  if (descriptor.separator == 0 ||
      !parse_date_ymd(text.substr(0, blank), clock, order, descriptor.separator, parts)) {
    return std::nullopt;
  }
  const std::uint64_t filetime = system_to_filetime(parts);
  if (!is_valid_filetime(filetime)) return std::nullopt;
  return filetime;
}

// Builds one command after the other from the tokens of a list.
class command_builder {
 public:
  explicit command_builder(const command_context& context) : context_(context) {}

  // Reads `tokens`, which are used up, into `command`; false if the command is dropped. The order
  // of the steps matters where one of them drops it.
  bool build(ReportCommand& command, argument_list& tokens) {
    command.all_data = take_flag_option("-all_data", tokens);
    command.event_lookup = take_flag_option("-event_lookup", tokens);
    if (!take_kind(command, tokens)) return false;
    std::string value;
    if (take_value_option("-id", value, tokens)) {
      if (const auto id = number_from_text(value)) {
        command.event_id = static_cast<std::uint64_t>(*id);
      }
    }
    if (!take_log(command, tokens)) return false;
    take_hist(command, tokens);
    if (take_value_option("-type", value, tokens)) {
      command.type_filter = to_lower(value);
      if (context_.log.channel.find(command.type_filter) == std::string::npos) return false;
    }
    if (!take_times(command, tokens)) return false;
    (void)take_value_option("-name", command.name, tokens);
    (void)take_value_option("-string_exists", command.string_exists, tokens);
    take_fields(command, tokens);
    take_translate(command, tokens);
    take_level(command, tokens);
    if (command.is_evt != (context_.log.kind == log_kind::evt)) return false;
    take_from_run(command);
    return true;
  }

 private:
  // A line that has both is for .evtx logs.
  static bool take_kind(ReportCommand& command, argument_list& tokens) {
    if (take_flag_option("-enum_evtxlog", tokens)) return true;
    command.is_evt = take_flag_option("-enum_evtlog", tokens);
    return command.is_evt;
  }

  // Only for the first command that gets here is the log examined. If it is not a log, only that
  // command is dropped: later ones are for the log that is already current.
  bool take_log(ReportCommand& command, argument_list& tokens) {
    std::string value;
    if (take_value_option("-log", value, tokens)) {
      command.log_path = expand_env_references(value, true);
    } else {
      command.log_path = context_.log.path;
      if (command.log_path.empty()) return false;
    }
    if (!classified_path_.empty()) return true;
    classified_path_ = command.log_path;
    log_source found;
    if (!context_.classify(found, command.log_path)) return false;
    context_.log = std::move(found);
    return true;
  }

  // The index also counts commands that a later step drops.
  void take_hist(ReportCommand& command, argument_list& tokens) {
    std::string value;
    if (take_value_option("-hist", value, tokens)) {
      split_on_char(value, '|', command.hist_fields, true, false, false);
    } else if (!context_.hist_fields.empty()) {
      command.hist_fields = context_.hist_fields;
    } else {
      return;
    }
    command.has_hist = true;
    command.hist_index = hist_count_++;
    for (const std::string& field : command.hist_fields) {
      command.hist_fields_lower.push_back(to_lower(field));
    }
  }

  // A start that cannot be read drops the command; a stop that cannot be read means no stop.
  bool take_times(ReportCommand& command, argument_list& tokens) const {
    std::string value;
    const format_descriptor& descriptor = context_.format.descriptor;
    const bool has_start = take_value_option("-start_time", value, tokens);
    if (has_start) command.start_time = time_of(value, descriptor).value_or(command.start_time);
    if (take_value_option("-stop_time", value, tokens)) {
      command.stop_time = time_of(value, descriptor).value_or(command.stop_time);
    }
    return !has_start || command.start_time != 0;
  }

  static void take_fields(ReportCommand& command, argument_list& tokens) {
    take_values("-conditions", tokens,
                [&](std::string&& value) { command.conditions.push_back(std::move(value)); });
    std::unordered_set<std::string> pulled;
    take_values("-pull", tokens, [&](std::string&& value) {
      if (pulled.insert(value).second) command.pull.push_back(std::move(value));
    });
  }

  void take_translate(ReportCommand& command, argument_list& tokens) const {
    take_values("-translate", tokens, [&](std::string&& value) {
      std::vector<std::string> pieces;
      split_on_char(value, '|', pieces, true, false, false);
      for (const std::string& piece : pieces) {
        const auto mark = piece.find('!');
        if (mark == std::string::npos) continue;
        command.translate_terms[piece.substr(0, mark)] = piece.substr(mark + 1);
      }
    });
    if (command.translate_terms.empty()) return;
    std::unordered_set<std::string> pulled(command.pull.begin(), command.pull.end());
    for (const auto& [field, text] : command.translate_terms) {
      translate_spec spec;
      if (!parse_translate_spec(spec, text, context_.format)) continue;
      if (!command.pull.empty() && pulled.insert(field).second) command.pull.push_back(field);
      command.translators.emplace(field, spec);
    }
  }

  // Any other value is taken literally, such as "Error".
  static void take_level(ReportCommand& command, argument_list& tokens) {
    struct level_code {
      std::string_view name, evtx, evt;
    };
    static constexpr std::array<level_code, 3> codes = {
        {{"error", "2", "1"}, {"warning", "3", "2"}, {"information", "4", "4"}}};
    std::string value;
    if (!take_value_option("-success_type", value, tokens)) return;
    for (const level_code& code : codes) {
      if (value != code.name) continue;
      value = command.is_evt ? code.evt : code.evtx;
      break;
    }
    command.level_condition = (command.is_evt ? "success_type|" : "Level|") + value;
  }

  void take_from_run(ReportCommand& command) const {
    const selection_options& run = context_.selection;
    command.log_path = context_.log.path;  // the command's own `-log` has been used by now
    if (run.start_time != 0) command.start_time = run.start_time;
    if (run.stop_time != selection_options::all_ones) command.stop_time = run.stop_time;
    if (!run.substring.empty()) command.string_exists = run.substring;
  }

  const command_context& context_;
  std::string classified_path_;
  std::int32_t hist_count_ = 0;
};

}  // namespace

bool build_command_set(CommandSet& set, const CommandList& list, const command_context& context,
                       bool append) {
  if (!append) set.clear();
  command_builder builder(context);
  argument_list tokens;
  bool added = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    list.copy_tokens(i, tokens);
    ReportCommand command;
    command.index = static_cast<std::int32_t>(i);
    if (!builder.build(command, tokens)) continue;
    std::string key = to_lower(command.log_path);
    set.emplace(std::move(key), std::move(command));
    added = true;
  }
  return added;
}

}  // namespace zanvik
