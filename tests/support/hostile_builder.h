// Logs that were crafted to be slow or large, one trick each, in any size.
//
// In: the name of a trick, a size. Out: the bytes of a log whose every chunk or record uses the
// trick, and the options with which the program is affected. Twice the size is twice the trick.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "byte_builder.h"

namespace zanvik::testing {

struct hostile_trick {
  std::string_view name;
  std::vector<std::string> options;
  std::string_view file_name;             // the name that reports test
  byte_vector (*chunk)(unsigned number);  // one of 65,536 bytes; not used for a legacy log
};

// All of them; "sound" is an ordinary log for comparison.
std::span<const hostile_trick> hostile_tricks();

// A log of `chunks` chunks, or a legacy log of the same size.
byte_vector hostile_log(const hostile_trick& trick, unsigned chunks);

}  // namespace zanvik::testing
