// Writes JSON on one line: objects and lists with the commas in their places.
// Texts are escaped as in the forms of export.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zanvik {

class json_writer {
 public:
  explicit json_writer(std::string& out) : out_(out) {}

  // Opens an object '{' or a list '['; without a name if it is in a list or alone.
  void open(std::string_view name, char bracket);
  void close(char bracket);
  void member(std::string_view name, bool value);
  void member(std::string_view name, std::uint64_t value);
  void member(std::string_view name, std::string_view value);
  void member(std::string_view name, const std::string& value) {
    member(name, std::string_view(value));
  }
  void member(std::string_view name, const char* value) { member(name, std::string_view(value)); }
  void element(std::uint64_t value);

 private:
  void next(std::string_view name);

  std::string& out_;
  bool first_ = true;
};

}  // namespace zanvik
