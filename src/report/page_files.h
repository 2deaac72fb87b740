// The page's script and style, which the build takes from page/, and their hashes.
#pragma once

namespace zanvik::page_files {

extern const char* const script;
extern const char* const style;
extern const char* const script_sha256;  // hexadecimal, lower case
extern const char* const style_sha256;

}  // namespace zanvik::page_files
