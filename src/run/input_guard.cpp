#include "run/input_guard.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "base/fileio.h"
#include "base/path_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "run/log_list.h"

namespace zanvik {
namespace {

struct named_value {
  std::string_view option;
  std::string value;
};

// The values of these options. Options are taken one by one, and a word between an option and its
// value may be taken first: so the next word counts, and the next that does not look like an
// option.
std::vector<named_value> values_of(std::initializer_list<std::string_view> options,
                                   const argument_list& args) {
  const auto looks_like_option = [](const std::string& word) { return word.starts_with('-'); };
  std::vector<named_value> found;
  for (auto word = args.begin(); word != args.end(); ++word) {
    const auto option = std::find_if(options.begin(), options.end(), [&](std::string_view name) {
      return option_equal(name, *word);
    });
    const auto next = word + 1;
    if (option == options.end() || next == args.end()) continue;
    found.push_back({*option, *next});
    const auto plain = std::find_if_not(next, args.end(), looks_like_option);
    if (plain != next && plain != args.end()) found.push_back({*option, *plain});
  }
  return found;
}

bool is_same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The regular files that a value of the command line may mean: as written, and as the options
// rewrite it.
std::vector<struct stat> files_named(const std::string& value) {
  std::string expanded = expand_env_references(value, true);
  std::string slashed = expanded;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  std::vector<struct stat> files;
  for (std::string path : {value, expanded, slashed}) {
    path.resize(path.find_last_not_of("/\\") + 1);
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) files.push_back(status);
  }
  return files;
}

std::vector<struct stat> input_files(const argument_list& args) {
  std::vector<struct stat> files;
  const auto add = [&files](const std::string& value) {
    for (const struct stat& file : files_named(value)) files.push_back(file);
  };
  for (const named_value& log : values_of({"-log"}, args)) {
    std::vector<std::string> items;
    split_on_first_of(log.value, items, true, false, "|,;");
    for (const std::string& item : items) add(item);
  }
  for (const named_value& file : values_of({"-cmdfile"}, args)) add(file.value);
  struct stat status = {};
  if (has_option_from("-pipe", args, 1) && ::fstat(STDIN_FILENO, &status) == 0) {
    files.push_back(status);
  }
  return files;
}

bool is_event_log(const std::string& value) {
  std::string path = expand_env_references(value, true);
  std::replace(path.begin(), path.end(), '\\', '/');
  for (const std::string& candidate : {value, path}) {
    std::vector<std::byte> head;
    if (uni::read_file_head(head, candidate, log_signature_bytes) && has_log_signature(head)) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<output_over_input> find_output_over_input(const argument_list& args) {
  const auto outputs = values_of({"-out", "-outfile", "-stats", "-diags"}, args);
  if (outputs.empty()) return std::nullopt;
  const auto inputs = input_files(args);
  const bool finds_logs = has_option_from("-pipe", args, 1) || has_option_from("-enumdir", args, 1);
  for (const auto& [option, path] : outputs) {
    for (const struct stat& output : files_named(path)) {
      const auto is_output = [&](const struct stat& input) { return is_same_file(input, output); };
      if (std::any_of(inputs.begin(), inputs.end(), is_output)) {
        return output_over_input{std::string(option), path, true};
      }
    }
    if (finds_logs && is_event_log(path))
      return output_over_input{std::string(option), path, false};
  }
  return std::nullopt;
}

}  // namespace zanvik
