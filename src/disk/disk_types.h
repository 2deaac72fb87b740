// The type byte of a partition: whether a table entry with it counts, and its name.
//
// In: any number from a table or a boot sector. The texts are constants of the program.
#pragma once

#include <cstdint>
#include <string>

namespace zanvik {

inline constexpr std::uint32_t extended_partition = 5;       // contains a chain of further tables
inline constexpr std::uint32_t extended_partition_lba = 15;  // the same
inline constexpr std::uint32_t gpt_protective_partition = 238;

// Whether a table entry of this type counts; one that does not ends its table. A protective entry
// does not count.
bool is_known_partition_type(std::uint8_t type);

// The name of the type, "unk" if it has none. With the top bit set only the low byte is the type,
// and " [guess]" follows the name.
std::string partition_type_text(std::uint16_t type);

// The same for the type of a found partition, of which 16 bits count.
std::string partition_text(std::uint32_t type);

}  // namespace zanvik
