// Names of members of one JSON object, each given once: the second "Data" is "Data_1".
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace zanvik {

class json_names {
 public:
  std::string take(std::string_view name) {
    std::string taken(name);
    if (used_.insert(taken).second) return taken;
    unsigned& number = numbers_[taken];
    do {
      taken = std::string(name) + "_" + std::to_string(++number);
    } while (!used_.insert(taken).second);
    return taken;
  }

 private:
  std::set<std::string, std::less<>> used_;
  std::map<std::string, unsigned> numbers_;
};

}  // namespace zanvik
