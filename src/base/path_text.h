// Splitting paths, and references to the environment in them. Paths are byte strings; both `\` and
// `/` separate, because names in a log and on the command line may come from Windows or Linux.
#pragma once

#include <string>
#include <string_view>

namespace zanvik {

// Splits `path` at its last `\`, if it has one, else at its last `/`; one at the very start does
// not count. Without a separator the folder is "." and the name is the path. A name of ".." becomes
// "." in the folder followed by `\..` or `//..`; a path of ".." is folder ".." and name ".". False,
// with empty outputs, for an empty path. `path` may not view one of the outputs.
bool split_path(std::string_view path, std::string& folder, std::string& name);

// split_path, then the name split at its last `.`, which is in neither part. Without one the
// extension is empty.
bool split_path_parts(std::string_view path, std::string& folder, std::string& name,
                      std::string& extension);

// `path` with each %NAME% replaced by that variable of the environment. The inserted text is
// searched again, so a value may itself contain references; their number and the length of the
// result are limited. An unknown NAME is left as it is; with `allow_vss` an unknown NAME of "vss"
// (in any case) becomes the device path of a shadow copy, without its number. A path of 513 bytes
// or more is not changed.
std::string expand_env_references(std::string_view path, bool allow_vss);

}  // namespace zanvik
