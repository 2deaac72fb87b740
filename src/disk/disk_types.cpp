#include "disk/disk_types.h"

#include <array>
#include <string_view>

namespace zanvik {
namespace {

constexpr std::uint8_t known_types[] = {
    1,   4,   5,   6,   7,   8,   11,  12,  14,  15,  17,  18,  20,  21,  22,  27,  28,  30,  31,
    36,  39,  65,  66,  67,  86,  100, 102, 116, 118, 121, 122, 123, 124, 125, 128, 129, 130, 131,
    132, 133, 134, 135, 136, 139, 140, 142, 144, 145, 146, 147, 151, 152, 154, 168, 171, 172, 175,
    182, 183, 187, 188, 194, 195, 196, 197, 198, 199, 203, 204, 205, 206, 207, 212, 213, 214, 216,
    222, 228, 229, 230, 232, 239, 240, 242, 244, 246, 249, 251, 252, 253, 254};
static_assert(std::size(known_types) == 91);

struct type_name {
  std::uint8_t type;
  std::string_view name;
};

// Meant: "hidden ntfs" and "fat12" have two numbers each.
constexpr type_name type_names[] = {
    {0, "empty"},
    {1, "fat12"},
    {2, "xenix root"},
    {3, "xenix /usr"},
    {4, "fat16"},
    {5, "exten"},
    {6, "fat"},
    {7, "ntfs or exfat"},
    {8, "aix boot"},
    {9, "aix data"},
    {10, "os/2 boot"},
    {11, "fat32"},
    {12, "fat32"},
    {14, "fat16 LBA mapped"},
    {15, "exten"},
    {17, "hidden fat16"},
    {20, "hidden fat16"},
    {22, "hidden fat16"},
    {23, "hidden ntfs"},
    {27, "hidden fat32"},
    {28, "hidden fat32"},
    {30, "hidden fat16"},
    {39, "hidden ntfs"},
    {130, "linux swap"},
    {131, "linux"},
    {134, "fat16 volume set"},
    {135, "ntfs volume set"},
    {136, "linux partition table"},
    {139, "fat32 fault tolerant"},
    {140, "fat32 fault tolerant"},
    {141, "fat12"},
    {142, "linux Logical Volume Mgr"},
    {144, "hidden fat16"},
    {145, "hidden fat16"},
    {146, "hidden fat16"},
    {147, "hidden linux"},
    {151, "hidden fat32"},
    {152, "hidden fat32"},
    {160, "hibernation partition"},
    {161, "hibernation partition"},
    {166, "openbsd"},
    {175, "hfs"},
    {gpt_protective_partition, "gpt"},
};

constexpr std::uint16_t guessed_type = 0x8000;

constexpr auto known_by_type = [] {
  std::array<bool, 256> known{};
  for (const std::uint8_t type : known_types) known[type] = true;
  return known;
}();

std::string_view name_of(std::uint16_t type) {
  for (const type_name& row : type_names) {
    if (row.type == type) return row.name;
  }
  return "unk";
}

}  // namespace

bool is_known_partition_type(std::uint8_t type) { return known_by_type[type]; }

std::string partition_type_text(std::uint16_t type) {
  if ((type & guessed_type) == 0) return std::string(name_of(type));
  return std::string(name_of(type & 0xff)) + " [guess]";
}

std::string partition_text(std::uint32_t type) {
  return partition_type_text(static_cast<std::uint16_t>(type));
}

}  // namespace zanvik
