// Writes logs to make reports of into a folder that is there: the incident, or with --markup logs
// that hold markup in every field. For scripts/test-report.
#include <exception>
#include <iostream>
#include <string>

#include "incident_builder.h"
#include "markup_logs.h"

int main(int argc, char** argv) {
  using namespace zanvik::testing;
  const bool markup = argc == 3 && std::string(argv[1]) == "--markup";
  if (argc != 2 && !markup) {
    std::cerr << "usage: make_report_logs [--markup] <folder>\n";
    return 1;
  }
  const std::string folder = std::string(argv[argc - 1]) + "/";
  try {
    if (markup) {
      std::size_t number = 0;
      for (const log_builder& log : markup_logs()) {
        log.write(folder + "<img src=x onerror=ran=3>" + std::to_string(number++) + ".evtx");
      }
    } else {
      for (const auto& [name, log] : incident_logs()) log.write(folder + name);
    }
  } catch (const std::exception& problem) {
    std::cerr << problem.what() << "\n";
    return 1;
  }
  return 0;
}
