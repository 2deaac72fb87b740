// The terms of `-filter`, `-filter_skip` and `-filter_sig`, which select files from a folder or a
// list of names. Texts are UTF-8 in lower case; a text that is not UTF-8 counts as empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

struct file_filter_entry {
  std::string path;                    // value of `-filter_path`
  std::string term;                    // the term as given
  std::string name;                    // pattern of the file name, its stars removed
  std::string stream;                  // the part after the first `:`, its stars removed
  std::vector<std::byte> signature;    // bytes of `-filter_sig`, which the file has ...
  std::uint64_t signature_offset = 0;  // ... here
  bool is_path = false;                // `name` starts with `/` and is matched against the folder
  bool match_all = false;              // the name is exactly `*`
  bool star_front = false;             // the name began with a star
  bool star_back = false;              // the name ended in a star
  bool has_stream = false;             // the term contains `:`
  bool stream_all = false;             // a stream is exactly `*`
  bool stream_star_front = false;
  bool stream_star_back = false;
};

// Appends the terms of `value`, separated by `|`, or by `,` if it has no bar. A term `*` replaces
// all other terms of the value.
void parse_filter_list(std::string_view value, std::vector<file_filter_entry>& out);

// Appends the entry of a signature, "hex bytes | offset" or "hex bytes , offset"; nothing if it has
// no bytes.
void parse_signature_filter(std::string_view value, std::vector<file_filter_entry>& out);

}  // namespace zanvik
