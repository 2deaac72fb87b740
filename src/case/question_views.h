// A view of the case for each of the examiner's questions.
#pragma once

#include <string>
#include <vector>

namespace zanvik {

struct question_view {
  std::string name;
  std::string sql;
};
std::vector<question_view> question_views();

}  // namespace zanvik
