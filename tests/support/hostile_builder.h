// Logs that were made to cost more than they are, one trick each, as large as is asked for.
//
// In: the name of a trick, a size. Out: the bytes of a log whose every chunk or record plays the
// trick, and the options that make the program fall for it. Twice the size is twice the trick.
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
  std::string_view file_name;             // reports go by it
  byte_vector (*chunk)(unsigned number);  // one of 65,536 bytes; not used for a legacy log
};

// All of them; "sound" is an ordinary log, to hold the others against.
std::span<const hostile_trick> hostile_tricks();

// A log of `chunks` chunks, or a legacy log of as many bytes.
byte_vector hostile_log(const hostile_trick& trick, unsigned chunks);

}  // namespace zanvik::testing
