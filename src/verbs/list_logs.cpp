#include "verbs/list_logs.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>

#include "export/output_buffer.h"
#include "verbs/log_options.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

// A name from an image may hold anything; a control character could write over other lines.
std::string printable(std::string text) {
  for (char& letter : text) {
    if (static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f) letter = '?';
  }
  return text;
}

}  // namespace

void add_list_option(CLI::App& app, bool& list) {
  app.add_flag("--list", list, "list the logs found, one per line, and read none");
}

int list_logs(const std::vector<std::string>& paths, carve_what carve) {
  int status = verb_done;
  const auto problem = [&status](const std::string& path, const std::string& what) {
    report_problem(path, what);
    status = verb_problems;
  };
  output_buffer out(STDOUT_FILENO);
  log_finder finder(
      [&](found_log& log) {
        const char* const kind = log.carve                           ? "bytes"
                                 : log.source.kind == log_kind::evtx ? "evtx"
                                                                     : "evt";
        const char* const mark = log.source.deleted ? "deleted" : "-";
        out.append(std::to_string(log.size) + '\t' + kind + '\t' + mark + '\t' +
                   printable(log.source.path) + '\n');
      },
      problem);
  finder.carve(carve);
  for (const std::string& path : paths) finder.find(path);
  if (!out.flush()) problem("standard output", std::strerror(out.error()));
  return status;
}

}  // namespace zanvik
