#include <exception>

#include "base/console.h"
#include "base/heap_pages.h"
#include "run/driver.h"
#ifdef ZANVIK_VERBS
#include "verbs/verbs.h"
#endif

int main(int argc, char** argv) {
  zanvik::use_large_heap_pages();
  try {
#ifdef ZANVIK_VERBS
    if (const auto status = zanvik::run_verb(argc, argv)) return *status;
#endif
    return zanvik::run_program(argc, argv);
  } catch (const std::exception& failure) {
    // Usually memory ran out. What was found so far has been written on the way here.
    zanvik::prob_message("prob run ended early: %s\n", failure.what());
    return -1;
  }
}
