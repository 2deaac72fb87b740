// The names of the states of chunks.
#pragma once

#include <string_view>

#include "inspect/log_ledger.h"

namespace zanvik {

constexpr std::string_view chunk_state_name(chunk_state state) {
  switch (state) {
    case chunk_state::sound:
      return "sound";
    case chunk_state::empty:
      return "empty";
    case chunk_state::foreign:
      return "foreign";
  }
  return "";
}

}  // namespace zanvik
