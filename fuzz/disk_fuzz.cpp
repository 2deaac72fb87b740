// Boot sectors, partition tables and drive layouts, and the text made of them.
#include "disk/disk_layout.h"
#include "disk/disk_text.h"
#include "fuzz_target.h"

namespace zanvik::fuzz {

ZANVIK_FUZZ_TARGET(disk) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  const auto offset = in.take<std::uint16_t>();
  // Sectors are mostly empty, so that short inputs stand for long disks.
  const std::size_t sizes[] = {0, 512, 2048, 20000};
  const exact_bytes disk(in.rest(), sizes[flags & 3]);
  std::vector<partition_entry> list;
  for (const bool scan : {false, true}) {
    const bool found = parse_disk_layout(disk.span(), list, scan);
    require(found == !list.empty(), "a disk that was read has partitions");
    require(list.size() <= (disk.span().size() / 512 + 2) * 4, "each table has four at most");
  }
  partition_entry entry;
  (void)parse_boot_sector(entry, disk.span());
  for (const auto kind :
       {translate_kind::tf, translate_kind::mbr, translate_kind::vbr, translate_kind::vtbl}) {
    translate_spec spec{kind, 0, 0, (flags & 4) != 0};
    spec.offset = offset & 0x7fff;
    spec.decimal = (offset & 0x8000) != 0;
    std::string text;
    (void)translate_value(spec, disk.span(), text);
    require(text.size() <= 1024 + 16 * disk.span().size(), "the text is in proportion");
  }
}

}  // namespace zanvik::fuzz
