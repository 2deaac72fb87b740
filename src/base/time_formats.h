// The forms of dates and times.
#pragma once

#include <string>

namespace zanvik {

struct time_formats {
  std::string date_format = "yyyy-mm-dd";
  std::string time_format = "hh:mm:ss.xxx";
};

}  // namespace zanvik
