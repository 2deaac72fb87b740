#include "disk/disk_layout.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/byte_cursor.h"
#include "disk/disk_types.h"

namespace zanvik {
namespace {

constexpr std::uint16_t boot_signature = 0xaa55;
constexpr std::size_t table_at = 446;  // of a boot record: four entries of 16 bytes
constexpr std::size_t table_entries = 4;
constexpr std::size_t table_entry_bytes = 16;
constexpr std::uint32_t large_sectors[] = {1024, 2048, 4096, 8192, 16384};
// The part of a boot sector that must exist for it to be examined.
constexpr std::size_t boot_sector_head_bytes = 76;

// Whether the sector names its file system, as those of volumes do and boot records do not.
bool names_file_system(const byte_cursor& disk, std::uint64_t sector) {
  const auto bytes = disk.bytes_at(sector + 3, 4);
  const std::string_view word(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return word == "EXFA" || word == "MSDO" || word == "NTFS";
}

bool ends_with_signature(const byte_cursor& disk, std::uint64_t sector, std::uint32_t size) {
  return disk.at<std::uint16_t>(sector + size - 2) == boot_signature;
}

bool is_boot_record(const byte_cursor& disk, std::uint64_t sector) {
  return ends_with_signature(disk, sector, sector_bytes) && !names_file_system(disk, sector);
}

// Size of the first sector if it is a boot record, else 0.
std::uint32_t boot_record_bytes(const byte_cursor& disk) {
  if (is_boot_record(disk, 0)) return sector_bytes;
  if (names_file_system(disk, 0)) return 0;
  for (const std::uint32_t size : large_sectors) {
    if (disk.size() > size && ends_with_signature(disk, 0, size)) return size;
  }
  return 0;
}

// Number of the first sector that is a boot record; 0 if there is none.
std::uint64_t find_boot_record(const byte_cursor& disk) {
  for (std::uint64_t at = 0; disk.has(at, sector_bytes); at += sector_bytes) {
    if (is_boot_record(disk, at)) return at / sector_bytes;
  }
  return 0;
}

// Walks the tables of one disk.
class table_walk {
 public:
  table_walk(const byte_cursor& disk, std::uint32_t sector_size, std::vector<partition_entry>& list)
      : disk_(disk), sector_size_(sector_size), list_(list) {}

  void walk_primary() {
    if (const auto chain = append_table(0, 0)) walk_chain(*chain);
  }

  // `first` is the sector of the first extended table.
  void walk_chain(std::uint64_t first) {
    std::vector<bool> seen(disk_.size() / sector_bytes + 1);
    std::uint64_t base = first;
    // Meant: the number of a sector is compared with a size in bytes.
    while (base != 0 && base < disk_.size()) {
      if (base > disk_.size() / sector_size_) return;  // it is not within the bytes
      const auto place = static_cast<std::size_t>(base * (sector_size_ / sector_bytes));
      if (seen[place]) return;
      seen[place] = true;
      const auto link = append_table(base * sector_size_, base);
      if (!link) return;
      base = first + *link;  // links count from the first table, partitions from their own
    }
  }

 private:
  // Appends the entries of the boot record at `record`, up to the first that does not count.
  // Returns the start of the extended partition that ended the table, as in its entry.
  std::optional<std::uint32_t> append_table(std::uint64_t record, std::uint64_t base) {
    for (std::size_t i = 0; i < table_entries; ++i) {
      const std::uint64_t at = record + table_at + i * table_entry_bytes;
      if (!disk_.has(at, table_entry_bytes)) return std::nullopt;
      const auto type = disk_.at_or_zero<std::uint8_t>(at + 4);
      const auto start = disk_.at_or_zero<std::uint32_t>(at + 8);
      const auto count = disk_.at_or_zero<std::uint32_t>(at + 12);
      if (!is_known_partition_type(type) || count == 0) return std::nullopt;
      partition_entry& entry = list_.emplace_back();
      entry.lba_start = base + start;
      entry.num_sectors = count;
      entry.type = type;
      entry.bytes_per_sector = sector_size_;
      if (type == extended_partition || type == extended_partition_lba) return start;
    }
    return std::nullopt;
  }

  const byte_cursor& disk_;
  std::uint32_t sector_size_;
  std::vector<partition_entry>& list_;
};

void read_boot_sectors(const byte_cursor& disk, std::vector<partition_entry>& list) {
  for (partition_entry& entry : list) {
    const std::uint64_t at = entry.lba_start * entry.bytes_per_sector;
    if (!disk.has(at, boot_sector_head_bytes)) continue;
    // Unknown fields stay as in the table.
    (void)parse_boot_sector(entry, disk.bytes().subspan(static_cast<std::size_t>(at)));
  }
}

}  // namespace

bool parse_disk_layout(std::span<const std::byte> bytes, std::vector<partition_entry>& list,
                       bool scan) {
  list.clear();
  const byte_cursor disk(bytes);
  if (disk.size() < sector_bytes) return false;
  if (const std::uint32_t size = boot_record_bytes(disk); size != 0) {
    table_walk(disk, size, list).walk_primary();
  } else if (!scan) {
    return false;
  } else if (names_file_system(disk, 0)) {
    (void)parse_boot_sector(list.emplace_back(), bytes);  // it is an entry in any case
    return true;
  } else {
    table_walk(disk, sector_bytes, list).walk_chain(find_boot_record(disk));
  }
  read_boot_sectors(disk, list);
  return !list.empty();
}

}  // namespace zanvik
