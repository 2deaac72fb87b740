// The columns of a table and its header line.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "options/output_format.h"

namespace zanvik {

struct table_column {
  std::string name;
  std::size_t width = 0;  // in bytes
  bool centred = false;   // the name stands in the middle
  bool is_time = false;   // the name stands a blank further right where fields are padded
};

// The header line, its line end included.
std::string table_header(const std::vector<table_column>& columns, const output_format& format);

}  // namespace zanvik
