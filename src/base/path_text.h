// Paths taken apart, and references to the environment in them. Paths are byte strings; both `\`
// and `/` divide, since the names in a log and on its command line may come from either world.
#pragma once

#include <string>
#include <string_view>

namespace zanvik {

// Divides `path` at its last `\`, if it has one, else at its last `/`; one at the very start does
// not count. Without any the folder is "." and the name is the path. A name of ".." becomes "." in
// the folder with `\..` or `//..` behind it; a path of ".." is folder ".." and name ".".
// False, with empty outputs, for an empty path. `path` may not view one of the outputs.
bool split_path(std::string_view path, std::string& folder, std::string& name);

// split_path, then the name divided at its last `.`, which is in neither part. Without one the
// extension is empty.
bool split_path_parts(std::string_view path, std::string& folder, std::string& name,
                      std::string& extension);

// `path` with each %NAME% replaced by that variable of the environment. What came in is looked
// through again, so a value may itself hold references; a bounded number of them is followed, up to
// a bounded length. An unknown NAME stays; with `allow_vss` an unknown NAME of "vss" (in any case)
// becomes the device path of a shadow copy, without its number. A path of 513 bytes or more stays
// as it is.
std::string expand_env_references(std::string_view path, bool allow_vss);

}  // namespace zanvik
