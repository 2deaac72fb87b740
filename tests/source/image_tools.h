// What tests of disk images share: packaged tools, and whether this build reads images at all.
// Where one of them is missing, a test says so and is skipped.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "../run/program_run.h"
#include "scratch_dir.h"

namespace zanvik::testing {

inline bool shell(const std::string& command) {
  return std::system(("PATH=$PATH:/sbin:/usr/sbin; " + command + " >/dev/null 2>&1").c_str()) == 0;
}

#define NEED(tool, package) \
  if (!shell("command -v " tool)) GTEST_SKIP() << tool " (" package ") is not installed"
#define NEED_IMAGES() \
  if (!reads_images()) GTEST_SKIP() << "this build of zanvik reads no images"

// An image that only says it is one tells whether images are read.
inline bool reads_images() {
  const scratch_dir scratch;
  const std::string path = scratch.write("a.vmdk", "KDMV");
  return run_zanvik({"export", path}).err.find("this build") == std::string::npos;
}

inline std::size_t count(const std::string& text, const std::string& what) {
  std::size_t found = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; ++at) ++found;
  return found;
}

}  // namespace zanvik::testing
