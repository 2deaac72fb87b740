#include <exception>

#include "base/console.h"
#include "run/driver.h"

int main(int argc, char** argv) {
  try {
    return zanvik::run_program(argc, argv);
  } catch (const std::exception& failure) {
    // Memory ran out, as a rule. What was found so far has been written on the way here.
    zanvik::prob_message("prob run ended early: %s\n", failure.what());
    return -1;
  }
}
