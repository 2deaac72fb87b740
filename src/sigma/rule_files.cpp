#include "sigma/rule_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>

#include "base/fileio.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

namespace fs = std::filesystem;

// Stands for a file, or for the rest of one, that cannot be read.
rule broken_file(const std::string& path, std::string problem, std::size_t line) {
  rule out;
  out.file = path;
  out.problem = std::move(problem);
  out.line = out.problem_line = line;
  return out;
}

}  // namespace

file_rules read_rule_text(const std::string& path, const std::string& text,
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

namespace {

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
    return read_rule_text(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
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

}  // namespace

bool list_rule_files(const std::vector<std::string>& paths, std::vector<std::string>& files,
                     std::vector<std::string>& messages, std::string& missing) {
  for (const std::string& path : paths) {
    if (list_files(path, files, messages)) continue;
    missing = path;
    return false;
  }
  drop_repeated_files(files);
  return true;
}

std::vector<file_rules> read_rule_files(const std::vector<std::string>& files,
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

}  // namespace zanvik::sigma
