// Text and value helpers: include this for all of them, or the one header that you need. They take
// narrow text in UTF-8, change it in place or fill an output, and report by a bool, a count or an
// optional. None prints, none throws on its own; bad text is an answer, never an error. Views need
// to live only during the call; none is kept.
#pragma once

// IWYU pragma: begin_exports
#include "base/byte_search.h"  // positions of bytes and of 32-bit words
#include "base/digits.h"       // numbers and GUIDs as text, the fast way
#include "base/number_text.h"  // numbers from text and to text
#include "base/path_text.h"    // splitting paths, environment references
#include "base/text.h"         // case, blanks, replacing, line-end marks, substring search
#include "base/text_split.h"   // lists from one text
#include "base/utf16.h"        // UTF-8, UTF-16 and the search for UTF-16 text in bytes
// IWYU pragma: end_exports
