#include "verbs/log_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "base/console.h"
#include "base/text.h"
#include "verbs/path_list.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

using condition_reader = bool (*)(std::string_view, event_conditions&);

bool read_from(std::string_view text, event_conditions& out) {
  const auto time = read_time(text, false);
  if (time) out.from = *time;
  return time.has_value();
}

bool read_to(std::string_view text, event_conditions& out) {
  const auto time = read_time(text, true);
  if (time) out.to = *time;
  return time.has_value();
}

// An option whose text `read` understands; it may come again.
void add_condition(CLI::App& app, const char* name, const char* value, const char* what,
                   condition_reader read, event_conditions& out) {
  const std::string_view names = name;
  const std::string shown(names.substr(names.find(',') + 1));  // the long one
  app.add_option_function<std::vector<std::string>>(
         name,
         [read, &out, shown](const std::vector<std::string>& texts) {
           for (const std::string& text : texts) {
             if (!read(text, out)) throw CLI::ValidationError(shown, "cannot be: " + text);
           }
         },
         what)
      ->type_name(value)
      ->allow_extra_args(false);
}

void add_patterns(CLI::App& app, const char* name, const char* value, const char* what,
                  std::vector<std::string>& out) {
  app.add_option(name, out, what)->type_name(value)->allow_extra_args(false);
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row[b.size()];
}

// The long option that is most like a misspelt one; empty when none is.
std::string nearest_option(const CLI::App& app, std::string_view misspelt) {
  misspelt = misspelt.substr(0, misspelt.find('='));
  std::string best;
  std::size_t least = std::max<std::size_t>(2, misspelt.size() / 4) + 1;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      const std::size_t distance = edit_distance("--" + name, misspelt);
      if (distance >= least) continue;
      least = distance;
      best = "--" + name;
    }
  }
  return best;
}

}  // namespace

void carve_option::add_to(CLI::App& app) {
  app.add_flag(
         "--carve{all}", text_,
         "find chunks and records of logs in any bytes; =unallocated: in the free space of images")
      ->check(CLI::IsMember({"all", "unallocated"}));
}

carve_what carve_option::what() const {
  if (text_.empty()) return carve_what::nothing;
  return text_ == "all" ? carve_what::everything : carve_what::free_space;
}

std::string path_options::read_lists() {
  const bool input_is_log = std::find(paths.begin(), paths.end(), "-") != paths.end();
  for (const std::string& list : lists) {
    if (list == "-" && input_is_log) return "-: standard input is a log already";
    if (std::string error = read_path_list(list, paths); !error.empty()) {
      return list + ": " + error;
    }
  }
  read_files = std::move(lists);
  lists.clear();
  return "";
}

void add_path_options(CLI::App& app, path_options& options, const char* what) {
  app.add_option("PATH", options.paths, what)->type_name("");
  CLI::Option* const lists =
      app.add_option("--from-list", options.lists,
                     "more paths, one per line or separated by NULs; - for standard input")
          ->allow_extra_args(false)
          ->type_name("FILE");
  app.parse_complete_callback([&options, lists] {
    const std::string error = options.read_lists();
    if (!error.empty()) throw CLI::ValidationError("--from-list", error);
    if (options.needed && options.paths.empty() && lists->count() == 0) {
      throw CLI::RequiredError("PATH");
    }
  });
}

void add_log_options(CLI::App& app, log_options& options) {
  event_conditions& take = options.conditions;
  add_path_options(app, options, "logs, folders, disk images, or - for a log on standard input");
  app.add_flag("-q,--quiet", options.quiet, "no progress line");
  app.add_flag("--slack", options.slack, "also records from free space, marked");
  options.carve.add_to(app);
  add_condition(app, "-i,--event-id", "LIST", "numbers and ranges: 4624,4625,1000-1010 or !4634",
                read_event_ids, take);
  add_patterns(app, "-c,--channel", "PATTERN", "only this channel; * and ? are wildcards",
               take.channels);
  add_patterns(app, "-p,--provider", "PATTERN", "only this provider", take.providers);
  add_patterns(app, "--computer", "PATTERN", "only this computer", take.computers);
  add_patterns(app, "-u,--user", "USER", "only with this SID or account name in any field",
               take.users);
  add_condition(app, "--from", "TIME", "from this time on: 2024-03-09, 2024-03-09T10:00+01:00",
                read_from, take);
  add_condition(app, "--to", "TIME", "up to this time; a date includes its day", read_to, take);
  add_condition(app, "-w,--where", "NAME=PATTERN",
                "only with this value in a field; != for without it", read_where, take);
  add_patterns(app, "--contains", "TEXT", "only with this text in any field", take.contains);
  add_condition(app, "-l,--level", "LIST", "critical, error, warning, information, verbose",
                read_levels, take);
}

int parse_verb(CLI::App& app, int argc, char** argv, bool& done) {
  done = false;
  try {
    app.parse(argc, argv);
    return verb_done;
  } catch (const CLI::CallForHelp&) {
    std::fputs(app.help().c_str(), stdout);
    done = true;
    return verb_done;
  } catch (const CLI::ExtrasError& error) {
    // The first of the arguments that nobody took is the one to name.
    const auto extras = app.remaining();
    const std::string first = extras.empty() ? std::string() : extras.front();
    const std::string near = nearest_option(app, first);
    std::fprintf(stderr, "%s: no such option: %s%s\n", app.get_name().c_str(), first.c_str(),
                 near.empty() ? "" : (" (did you mean " + near + "?)").c_str());
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), error.what());
  }
  std::fprintf(stderr, "%s --help shows the options\n", app.get_name().c_str());
  done = true;
  return verb_bad_command;
}

std::string output_name_problem(const std::string& name) {
  return name.empty() ? "an output has to have a name" : "";
}

void report_problem(const std::string& path, const std::string& what) {
  // Names and rules are anybody's text; a terminal gets no control characters of theirs.
  std::fprintf(stderr, "zanvik: %s\n", printable_name(path + ": " + what).c_str());
}

}  // namespace zanvik
