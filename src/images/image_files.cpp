#include "images/image_files.h"

#include <tsk/libtsk.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <type_traits>

#include "base/limits.h"
#include "images/shadow_copies.h"

namespace zanvik {
namespace {

std::string last_error() {
  const char* const text = tsk_error_get();
  std::string what = text ? text : "cannot be read";
  std::replace(what.begin(), what.end(), '\n', ' ');
  tsk_error_reset();
  return what;
}

TSK_IMG_TYPE_ENUM type_of(image_kind kind) {
  switch (kind) {
    case image_kind::ewf:
      return TSK_IMG_TYPE_EWF_EWF;
    case image_kind::vmdk:
      return TSK_IMG_TYPE_VMDK_VMDK;
    case image_kind::vhd:
      return TSK_IMG_TYPE_VHD_VHD;
    case image_kind::raw:
      break;
  }
  return TSK_IMG_TYPE_RAW;
}

// The library knows more kinds than these; some of them it finds in any bytes.
TSK_FS_INFO* open_known_system(TSK_IMG_INFO* image, std::uint64_t offset) {
  for (const TSK_FS_TYPE_ENUM type :
       {TSK_FS_TYPE_NTFS_DETECT, TSK_FS_TYPE_FAT_DETECT, TSK_FS_TYPE_EXT_DETECT,
        TSK_FS_TYPE_HFS_DETECT, TSK_FS_TYPE_ISO9660_DETECT}) {
    TSK_FS_INFO* const system = tsk_fs_open_img(image, static_cast<TSK_OFF_T>(offset), type);
    if (system) return system;
    tsk_error_reset();
  }
  return nullptr;
}

// What a volume is encrypted with, which only its key opens; empty if that does not show.
std::string encryption_of(TSK_IMG_INFO* image, std::uint64_t offset) {
  char start[16] = {};
  if (tsk_img_read(image, static_cast<TSK_OFF_T>(offset), start, sizeof start) != sizeof start) {
    tsk_error_reset();
    return "";
  }
  const std::string_view bytes(start, sizeof start);
  if (bytes.substr(3).starts_with("-FVE-FS-")) return "BitLocker";
  return bytes.starts_with("LUKS\xba\xbe") ? "LUKS" : "";
}

// A shadow copy as the library's image, which is the first member: the library takes the address of
// either for the other.
struct copy_image {
  TSK_IMG_INFO image{};
  shadow_copies* copies = nullptr;
  std::size_t number = 0;
};

ssize_t read_copy(TSK_IMG_INFO* image, TSK_OFF_T offset, char* buffer, std::size_t size) {
  static_assert(std::is_standard_layout_v<copy_image>);
  const auto& from = *reinterpret_cast<copy_image*>(image);
  const std::uint64_t whole = from.copies->size(from.number);
  const auto at = static_cast<std::uint64_t>(offset);
  if (offset < 0 || at >= whole) return -1;
  const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, whole - at));
  return static_cast<ssize_t>(
      from.copies->read(from.number, {reinterpret_cast<std::byte*>(buffer), wanted}, at));
}
void close_copy(TSK_IMG_INFO*) {}
void describe_copy(TSK_IMG_INFO*, FILE*) {}

}  // namespace

struct image_files::library {
  TSK_IMG_INFO* image = nullptr;
  std::vector<TSK_FS_INFO*> systems;
  std::vector<std::unique_ptr<shadow_copies>> shadows;
  std::vector<std::unique_ptr<copy_image>> copies;

  // The file of the last read, which is mostly that of the next.
  TSK_FS_FILE* file = nullptr;
  std::size_t file_system = 0;
  std::uint64_t file_address = 0;

  void close_file() {
    if (file) tsk_fs_file_close(file);
    file = nullptr;
  }
};

image_files::image_files() : library_(std::make_unique<library>()) {}
// The process ends with this; the library's own ending has nothing to give back.
image_files::~image_files() = default;

void image_files::add_problem(const std::string& path, const std::string& what) {
  item problem;
  problem.what = image_item::problem;
  const bool ends_a_name = path.ends_with(':');  // of a volume, without a file behind it
  problem.path = path.substr(0, path.size() - (ends_a_name ? 1 : 0)) + '\0' + what;
  items_.push_back(std::move(problem));
}

void image_files::open(const std::string& path, image_kind kind, image_use use) {
  library_->image = tsk_img_open_utf8_sing(path.c_str(), type_of(kind), 0);
  if (!library_->image) return add_problem("", last_error());
  if (use == image_use::bytes) {
    item whole;
    whole.what = image_item::whole;
    whole.size = static_cast<std::uint64_t>(library_->image->size);
    items_.push_back(whole);
    return;
  }
  open_volumes(use);
}

// Partitions count from 1, as they stand in the table; without one the image is a volume.
void image_files::open_volumes(image_use use) {
  TSK_VS_INFO* const volumes = tsk_vs_open(library_->image, 0, TSK_VS_TYPE_DETECT);
  if (!volumes) {
    tsk_error_reset();
    if (!open_system("", 0, use)) add_problem("", "no file system that can be read");
    return;
  }
  unsigned number = 0;
  bool any = false;
  for (TSK_PNUM_T i = 0; i < volumes->part_count; ++i) {
    const TSK_VS_PART_INFO* const part = tsk_vs_part_get(volumes, i);
    if (!part || !(part->flags & TSK_VS_PART_FLAG_ALLOC)) continue;
    const std::string name = "p" + std::to_string(++number) + ":";
    const std::uint64_t offset = part->start * volumes->block_size;
    any = open_system(name, offset, use) || any;
  }
  if (!any) add_problem("", "no file system that can be read");
}

bool image_files::open_system(const std::string& name, std::uint64_t offset, image_use use) {
  on_progress();
  const std::string encryption = encryption_of(library_->image, offset);
  if (!encryption.empty()) {
    add_problem(name, "the volume is encrypted with " + encryption);
    return true;
  }
  TSK_FS_INFO* const system = open_known_system(library_->image, offset);
  if (!system) return false;
  library_->systems.push_back(system);
  const std::size_t number = library_->systems.size() - 1;
  if (use == image_use::free_space) {
    find_free_space(number, name);
    return true;
  }
  find_logs(number, name);
  if (TSK_FS_TYPE_ISNTFS(system->ftype)) {
    open_shadows(name, offset, system->block_count * system->block_size);
  }
  return true;
}

void image_files::open_shadows(const std::string& name, std::uint64_t offset, std::uint64_t size) {
  auto copies = std::make_unique<shadow_copies>();
  std::string problem;
  const auto read = [this, offset](std::span<std::byte> buffer, std::uint64_t at) {
    return static_cast<std::int64_t>(
        tsk_img_read(library_->image, static_cast<TSK_OFF_T>(offset + at),
                     reinterpret_cast<char*>(buffer.data()), buffer.size()));
  };
  const bool any = copies->open(read, size, problem);
  if (!problem.empty()) add_problem(name + "vss", problem);
  if (!any) return;
  for (std::size_t i = 0; i < copies->count(); ++i) {
    on_progress();
    const std::string copy_name = name + "vss" + std::to_string(i + 1) + ":";
    auto made = std::make_unique<copy_image>();
    made->copies = copies.get();
    made->number = i;
    TSK_IMG_INFO* const image =
        tsk_img_open_external(made.get(), static_cast<TSK_OFF_T>(copies->size(i)), 512, read_copy,
                              close_copy, describe_copy);
    if (!image) {
      add_problem(copy_name, last_error());
      continue;
    }
    TSK_FS_INFO* const system = tsk_fs_open_img(image, 0, TSK_FS_TYPE_NTFS);
    library_->copies.push_back(std::move(made));
    if (!system) {
      add_problem(copy_name, last_error());
      continue;
    }
    library_->systems.push_back(system);
    find_logs(library_->systems.size() - 1, copy_name);
  }
  library_->shadows.push_back(std::move(copies));
}

namespace {

// What a walk over the files of a file system carries along.
struct file_walk {
  std::vector<image_files::item>& items;
  const std::function<void()>& on_progress;
  const std::string& name;
  std::size_t system = 0;
  std::uint64_t files = 0;
  std::set<std::uint64_t> seen;  // addresses of logs
};

TSK_WALK_RET_ENUM on_file(TSK_FS_FILE* file, const char* folder, void* pointer) {
  file_walk& walk = *static_cast<file_walk*>(pointer);
  walk.on_progress();
  if (++walk.files > limits::files_of_a_volume || walk.items.size() > limits::logs_of_an_image) {
    return TSK_WALK_STOP;
  }
  const TSK_FS_META* const meta = file->meta;
  if (!meta || !file->name || meta->type != TSK_FS_META_TYPE_REG || meta->size <= 0) {
    return TSK_WALK_CONT;
  }
  const bool deleted = (meta->flags & TSK_FS_META_FLAG_UNALLOC) != 0;
  // A name that was deleted, of a file that is another one by now.
  if ((file->name->flags & TSK_FS_NAME_FLAG_UNALLOC) && !deleted) return TSK_WALK_CONT;
  std::byte head[log_start_bytes];
  const ssize_t got = tsk_fs_file_read(file, 0, reinterpret_cast<char*>(head), sizeof head,
                                       TSK_FS_FILE_READ_FLAG_NONE);
  tsk_error_reset();
  if (got <= 0) return TSK_WALK_CONT;
  const auto kind = log_kind_of({head, static_cast<std::size_t>(got)});
  if (!kind || !walk.seen.insert(meta->addr).second) return TSK_WALK_CONT;
  image_files::item found;
  found.is_legacy = *kind == log_kind::evt;
  found.is_deleted = deleted;
  found.size = static_cast<std::uint64_t>(meta->size);
  found.modified = meta->mtime;
  found.path = walk.name + "/" + (folder ? folder : "") + file->name->name;
  found.system = walk.system;
  found.address = meta->addr;
  walk.items.push_back(std::move(found));
  return TSK_WALK_CONT;
}

struct block_walk {
  image_files::item& volume;
  const std::function<void()>& on_progress;
  TSK_FS_INFO* system = nullptr;
  bool full = false;
};

TSK_WALK_RET_ENUM on_block(const TSK_FS_BLOCK* block, void* pointer) {
  block_walk& walk = *static_cast<block_walk*>(pointer);
  std::vector<image_extent>& extents = walk.volume.extents;
  const std::uint64_t size = walk.system->block_size;
  const std::uint64_t offset = static_cast<std::uint64_t>(walk.system->offset) + block->addr * size;
  walk.volume.size += size;
  if (!extents.empty() && extents.back().offset + extents.back().size == offset) {
    extents.back().size += size;
    return TSK_WALK_CONT;
  }
  walk.on_progress();
  walk.full = extents.size() == limits::extents_of_a_volume;
  if (walk.full) return TSK_WALK_STOP;
  extents.push_back({offset, size});
  return TSK_WALK_CONT;
}

}  // namespace

void image_files::find_logs(std::size_t system, const std::string& name) {
  TSK_FS_INFO* const files = library_->systems[system];
  // Files whose folder is gone are looked for where that takes no search of the whole volume.
  const int orphans = TSK_FS_TYPE_ISNTFS(files->ftype) ? 0 : TSK_FS_DIR_WALK_FLAG_NOORPHAN;
  const auto flags = static_cast<TSK_FS_DIR_WALK_FLAG_ENUM>(TSK_FS_DIR_WALK_FLAG_ALLOC |
                                                            TSK_FS_DIR_WALK_FLAG_UNALLOC |
                                                            TSK_FS_DIR_WALK_FLAG_RECURSE | orphans);
  file_walk walk{items_, on_progress, name, system, 0, {}};
  if (tsk_fs_dir_walk(files, files->root_inum, flags, on_file, &walk) != 0) {
    add_problem(name, last_error());
  }
  if (walk.files > limits::files_of_a_volume || items_.size() > limits::logs_of_an_image) {
    add_problem(name, "too many files; the rest was not looked at");
  }
}

void image_files::find_free_space(std::size_t system, const std::string& name) {
  TSK_FS_INFO* const files = library_->systems[system];
  item volume;
  volume.what = image_item::volume;
  volume.system = system;
  volume.path = name;
  block_walk walk{volume, on_progress, files, false};
  const auto flags = static_cast<TSK_FS_BLOCK_WALK_FLAG_ENUM>(TSK_FS_BLOCK_WALK_FLAG_UNALLOC |
                                                              TSK_FS_BLOCK_WALK_FLAG_AONLY);
  if (tsk_fs_block_walk(files, files->first_block, files->last_block, flags, on_block, &walk) !=
      0) {
    add_problem(name, last_error());
  }
  if (walk.full) add_problem(name, "too many pieces of free space; the rest was not looked at");
  items_.push_back(std::move(volume));
}

std::int64_t image_files::read(const item& from, std::span<std::byte> buffer,
                               std::uint64_t offset) {
  char* const to = reinterpret_cast<char*>(buffer.data());
  const auto at = static_cast<TSK_OFF_T>(offset);
  if (at < 0) return -1;
  tsk_error_reset();
  if (from.what != image_item::log) {
    if (offset >= static_cast<std::uint64_t>(library_->image->size)) return 0;
    return tsk_img_read(library_->image, at, to, buffer.size());
  }
  library& known = *library_;
  if (offset >= from.size) return 0;
  if (!known.file || known.file_system != from.system || known.file_address != from.address) {
    known.close_file();
    known.file = tsk_fs_file_open_meta(known.systems[from.system], nullptr, from.address);
    known.file_system = from.system;
    known.file_address = from.address;
  }
  if (!known.file) return -1;
  return tsk_fs_file_read(known.file, at, to, buffer.size(), TSK_FS_FILE_READ_FLAG_NONE);
}

}  // namespace zanvik
