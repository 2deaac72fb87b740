#include "shadow_builder.h"

#include <algorithm>

#include "byte_builder.h"

namespace zanvik::testing {
namespace {

constexpr std::uint64_t header_at = 0x1e00;
constexpr std::size_t head_bytes = 128;  // in front of each block of structures

enum class block_kind : std::uint32_t {
  volume_header = 1,
  catalog = 2,
  block_list = 3,
  store_header = 4,
  range_list = 5,
  bitmap = 6,
};

// What all structures begin with.
byte_vector head(block_kind kind, std::uint64_t relative_offset, std::uint64_t offset,
                 std::uint64_t next_offset) {
  byte_vector out = guid_bytes("3808876b-c176-4e48-b7ae-04046e6cc752");
  append_u32(out, 1);  // version
  append_u32(out, static_cast<std::uint32_t>(kind));
  append_u64(out, relative_offset);
  append_u64(out, offset);
  append_u64(out, next_offset);
  return out;
}

byte_vector guid_of(std::size_t copy, int use) {
  byte_vector out = guid_bytes("5b0a8f00-0000-4000-8000-000000000000");
  set_u8(out, 14, static_cast<std::uint8_t>(use));
  set_u8(out, 15, static_cast<std::uint8_t>(copy));
  return out;
}

class volume_builder {
 public:
  volume_builder(const std::vector<std::string>& then, const std::string& now)
      : then_(then), now_(now), out_(now) {
    const std::string zeros(shadow_block_bytes, '\0');
    const auto is_free = [&](const std::string& state, std::size_t at) {
      return state.compare(at, shadow_block_bytes, zeros) == 0;
    };
    // The volume's last block has a copy of its first sector.
    for (std::size_t at = 0; at + 2 * shadow_block_bytes <= now.size(); at += shadow_block_bytes) {
      if (is_free(now, at) && std::all_of(then.begin(), then.end(),
                                          [&](const auto& state) { return is_free(state, at); })) {
        free_.push_back(at);
      }
    }
  }

  std::string build() {
    if (free_.empty()) return "";
    const std::uint64_t catalog_at = take();
    byte_vector catalog = head(block_kind::catalog, 0, catalog_at, 0);
    catalog.resize(head_bytes);
    for (std::size_t copy = 0; copy < then_.size(); ++copy) {
      if (!add_copy(copy, catalog)) return "";
    }
    put(catalog_at, catalog);
    byte_vector header = head(block_kind::volume_header, header_at, header_at, 0);
    append_u64(header, catalog_at);  // at 48
    append_u64(header, 0);           // no maximum size
    append_bytes(header, guid_of(0, 1));
    append_bytes(header, guid_of(0, 1));  // kept on the volume itself
    put(header_at, header);
    return out_;
  }

 private:
  std::uint64_t take() {
    const std::uint64_t at = free_.back();
    free_.pop_back();
    return at;
  }
  void put(std::uint64_t at, const byte_vector& bytes) {
    std::copy_n(reinterpret_cast<const char*>(bytes.data()), bytes.size(),
                out_.begin() + static_cast<std::ptrdiff_t>(at));
  }

  // The offsets of the blocks that changed until the next copy, or until now.
  std::vector<std::uint64_t> changed_blocks(std::size_t copy) const {
    const std::string& old = then_[copy];
    const std::string& later = copy + 1 < then_.size() ? then_[copy + 1] : now_;
    std::vector<std::uint64_t> changed;
    for (std::size_t at = 0; at < old.size(); at += shadow_block_bytes) {
      if (old.compare(at, shadow_block_bytes, later, at, shadow_block_bytes) != 0) {
        changed.push_back(at);
      }
    }
    return changed;
  }

  bool add_copy(std::size_t copy, byte_vector& catalog) {
    const auto changed = changed_blocks(copy);
    const std::size_t most = (shadow_block_bytes - head_bytes) / 32;
    if (changed.size() > most || changed.size() + 5 > free_.size()) return false;
    const std::uint64_t header = take(), list = take(), ranges = take(), bitmap = take();
    byte_vector blocks = head(block_kind::block_list, shadow_block_bytes, list, 0);
    blocks.resize(head_bytes);
    byte_vector kept = head(block_kind::range_list, 2 * shadow_block_bytes, ranges, 0);
    kept.resize(head_bytes);
    std::uint64_t relative = 4 * shadow_block_bytes;
    for (const std::uint64_t original : changed) {
      const std::uint64_t at = take();
      out_.replace(at, shadow_block_bytes, then_[copy], original, shadow_block_bytes);
      append_u64(blocks, original);
      append_u64(blocks, relative);
      append_u64(blocks, at);
      append_u64(blocks, 0);  // flags and allocation: a plain block
      append_u64(kept, at);
      append_u64(kept, relative);
      append_u64(kept, shadow_block_bytes);
      relative += shadow_block_bytes;
    }
    put(list, blocks);
    put(ranges, kept);
    // No bit set: all blocks were in use.
    put(bitmap, head(block_kind::bitmap, 3 * shadow_block_bytes, bitmap, 0));
    put_store_header(copy, header);
    add_entries(copy, catalog, {header, list, ranges, bitmap}, relative);
    return true;
  }

  void put_store_header(std::size_t copy, std::uint64_t at) {
    byte_vector information = guid_of(copy, 2);
    append_bytes(information, guid_of(copy, 3));  // of the shadow copy
    append_bytes(information, guid_of(copy, 4));  // of its set
    append_u32(information, 0x1d);                // made by a client, persistent
    append_u32(information, 0);
    append_u32(information, 0x0042000d);
    append_u32(information, 0);
    for (const char* const machine : {"pc.example", "pc.example"}) {
      append_u16(information, static_cast<std::uint16_t>(2 * utf16_units(machine)));
      append_utf16(information, machine);
    }
    byte_vector store = head(block_kind::store_header, 0, at, 0);
    append_u64(store, information.size());
    store.resize(head_bytes);
    append_bytes(store, information);
    put(at, store);
  }

  struct places {
    std::uint64_t header, list, ranges, bitmap;
  };
  void add_entries(std::size_t copy, byte_vector& catalog, const places& at,
                   std::uint64_t allocated) {
    const std::size_t begin = catalog.size();
    append_u64(catalog, 2);
    append_u64(catalog, out_.size());
    append_bytes(catalog, guid_of(copy, 2));
    append_u64(catalog, copy + 1);
    append_u64(catalog, 0x440);
    append_u64(catalog, filetime(2024, 1, 1) + copy * 864'000'000'000);
    catalog.resize(begin + 128);
    append_u64(catalog, 3);
    append_u64(catalog, at.list);
    append_bytes(catalog, guid_of(copy, 2));
    append_u64(catalog, at.header);
    append_u64(catalog, at.ranges);
    append_u64(catalog, at.bitmap);
    append_u64(catalog, 0);  // the file that would hold the copy
    append_u64(catalog, allocated);
    append_u64(catalog, 0);  // no earlier bitmap
    catalog.resize(begin + 256);
  }

  const std::vector<std::string>& then_;
  const std::string& now_;
  std::string out_;
  std::vector<std::uint64_t> free_;
};

}  // namespace

std::string with_shadow_copies(const std::vector<std::string>& then, const std::string& now) {
  return volume_builder(then, now).build();
}

}  // namespace zanvik::testing
