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
  bool centred = false;   // the name is in the middle
  bool is_time = false;   // the name is one blank further right if fields are padded
};

// The header line, including its line end.
std::string table_header(const std::vector<table_column>& columns, const output_format& format);

}  // namespace zanvik
