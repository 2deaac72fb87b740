// Writes the sample logs into the folder named on the command line: make_samples samples
#include <exception>
#include <iostream>
#include <string>

#include "samples_builder.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_samples <folder>\n";
    return 1;
  }
  const std::string folder = std::string(argv[1]) + "/";
  try {
    zanvik::testing::security_sample().write(folder + "security.evtx");
    zanvik::testing::system_sample().write(folder + "system.evtx");
    zanvik::testing::sysmon_sample().write(folder + "sysmon.evtx");
    zanvik::testing::odd_sample().write(folder + "odd.evtx");
  } catch (const std::exception& problem) {
    std::cerr << problem.what() << "\n";
    return 1;
  }
  return 0;
}
