// YAML by yaml-cpp, read into a plain tree; the only file that uses the library.
//
// In: the text of a file of any origin. Out: one tree for each document. Bad input: documents up to
// the broken one, and one line that says what is wrong and where. Aliases are copied, within a
// limit on all nodes of a file, so that a small file cannot grow without end.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zanvik::sigma {

struct yaml_node {
  enum class kind : unsigned char { null, text, list, map };
  kind what = kind::null;
  std::size_t line = 1;
  std::string text;
  std::vector<yaml_node> items;  // of a list; the values of a map, in the order of `keys`
  std::vector<std::string> keys;

  bool is_text() const { return what == kind::text; }
  bool is_list() const { return what == kind::list; }
  bool is_map() const { return what == kind::map; }
  // The value of a key, or null if this is not a map or has no such key.
  const yaml_node* find(std::string_view key) const;
  // The text of a key, empty if it has none.
  std::string_view text_of(std::string_view key) const;
};

struct yaml_file {
  std::vector<yaml_node> documents;
  std::string error;  // empty when all could be read
  std::size_t error_line = 0;
};

// Lines are counted from `first_line`.
yaml_file read_yaml(const std::string& text, std::size_t first_line = 1);

// The documents of a file, which lines "---" separate, as texts; an error in one does not affect
// the next. A file with directives is one piece.
struct yaml_piece {
  std::string_view text;
  std::size_t line;  // its first
};
std::vector<yaml_piece> yaml_pieces(std::string_view text);

}  // namespace zanvik::sigma
