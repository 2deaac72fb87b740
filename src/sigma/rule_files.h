// Files of rules: which they are, and what each of them yields.
//
// In: paths, files as they are or folders. Out: rules in the order of their files, whatever the
// number of threads that read them. Bad input: what cannot be read of a file becomes a broken rule.
#pragma once

#include <string>
#include <vector>

#include "sigma/rule_reader.h"

namespace zanvik::sigma {

// What one file yields, before rules meet one another.
using file_rules = std::vector<rule>;

// The files to read, each once; folders with their `.yml` and `.yaml` files in the order of their
// names. `messages` get what could not be looked at. False when a path, `missing`, is not there.
bool list_rule_files(const std::vector<std::string>& paths, std::vector<std::string>& files,
                     std::vector<std::string>& messages, std::string& missing);

std::vector<file_rules> read_rule_files(const std::vector<std::string>& files,
                                        const placeholder_values& placeholders);
// Of a file with that text.
file_rules read_rule_text(const std::string& path, const std::string& text,
                          const placeholder_values& placeholders);

}  // namespace zanvik::sigma
