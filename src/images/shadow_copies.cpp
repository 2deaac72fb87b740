#include "images/shadow_copies.h"

#define LIBVSHADOW_HAVE_BFIO 1
#include <libbfio.h>
#include <libvshadow.h>

#include <cstdio>

namespace zanvik {
namespace {

// What the library reads the volume through. Handles are copied while it reads.
struct volume {
  volume_read read;
  std::uint64_t size = 0;
  std::uint64_t position = 0;
};

volume& of(intptr_t* handle) { return *reinterpret_cast<volume*>(handle); }

int free_volume(intptr_t** handle, libbfio_error_t**) {
  if (handle && *handle) {
    delete reinterpret_cast<volume*>(*handle);
    *handle = nullptr;
  }
  return 1;
}
int clone_volume(intptr_t** to, intptr_t* from, libbfio_error_t**) {
  *to = reinterpret_cast<intptr_t*>(new volume(of(from)));
  return 1;
}
int open_volume(intptr_t*, int, libbfio_error_t**) { return 1; }
int close_volume(intptr_t*, libbfio_error_t**) { return 0; }
int volume_is_there(intptr_t*, libbfio_error_t**) { return 1; }
ssize_t write_volume(intptr_t*, const std::uint8_t*, std::size_t, libbfio_error_t**) { return -1; }

ssize_t read_volume(intptr_t* handle, std::uint8_t* buffer, std::size_t size, libbfio_error_t**) {
  volume& from = of(handle);
  const std::int64_t got = from.read({reinterpret_cast<std::byte*>(buffer), size}, from.position);
  if (got > 0) from.position += static_cast<std::uint64_t>(got);
  return static_cast<ssize_t>(got);
}

off64_t seek_volume(intptr_t* handle, off64_t offset, int whence, libbfio_error_t**) {
  volume& in = of(handle);
  const auto base = whence == SEEK_SET   ? off64_t{0}
                    : whence == SEEK_CUR ? static_cast<off64_t>(in.position)
                                         : static_cast<off64_t>(in.size);
  if (offset < 0 && -offset > base) return -1;
  in.position = static_cast<std::uint64_t>(base + offset);
  return base + offset;
}

int size_of_volume(intptr_t* handle, size64_t* size, libbfio_error_t**) {
  *size = of(handle).size;
  return 1;
}

std::string text_of(libvshadow_error_t*& error) {
  char text[512] = "cannot be read";
  if (error) libvshadow_error_sprint(error, text, sizeof text);
  libvshadow_error_free(&error);
  return text;
}

}  // namespace

struct shadow_copies::library {
  libbfio_handle_t* handle = nullptr;
  libvshadow_volume_t* volume = nullptr;
  std::vector<libvshadow_store_t*> stores;

  ~library() {
    for (libvshadow_store_t*& store : stores) libvshadow_store_free(&store, nullptr);
    if (volume) libvshadow_volume_free(&volume, nullptr);
    if (handle) libbfio_handle_free(&handle, nullptr);
  }
};

shadow_copies::shadow_copies() : library_(std::make_unique<library>()) {}
shadow_copies::~shadow_copies() = default;

bool shadow_copies::open(volume_read read, std::uint64_t size, std::string& problem) {
  library& in = *library_;
  auto source = std::make_unique<volume>(volume{std::move(read), size, 0});
  if (libbfio_handle_initialize(&in.handle, reinterpret_cast<intptr_t*>(source.get()), free_volume,
                                clone_volume, open_volume, close_volume, read_volume, write_volume,
                                seek_volume, volume_is_there, volume_is_there, size_of_volume,
                                LIBBFIO_FLAG_IO_HANDLE_MANAGED, nullptr) != 1) {
    return false;
  }
  (void)source.release();  // the handle's now
  if (libvshadow_check_volume_signature_file_io_handle(in.handle, nullptr) != 1) return false;
  libvshadow_error_t* error = nullptr;
  int count = 0;
  if (libvshadow_volume_initialize(&in.volume, &error) != 1 ||
      libvshadow_volume_open_file_io_handle(in.volume, in.handle, LIBVSHADOW_OPEN_READ, &error) !=
          1 ||
      libvshadow_volume_get_number_of_stores(in.volume, &count, &error) != 1) {
    problem = text_of(error);
    return false;
  }
  for (int number = 0; number < count; ++number) {
    libvshadow_store_t* store = nullptr;
    if (libvshadow_volume_get_store(in.volume, number, &store, &error) != 1) {
      problem = text_of(error);
      break;
    }
    in.stores.push_back(store);
  }
  return !in.stores.empty();
}

std::size_t shadow_copies::count() const { return library_->stores.size(); }

std::uint64_t shadow_copies::size(std::size_t copy) const {
  size64_t size = 0;
  return libvshadow_store_get_volume_size(library_->stores[copy], &size, nullptr) == 1 ? size : 0;
}

std::int64_t shadow_copies::read(std::size_t copy, std::span<std::byte> buffer,
                                 std::uint64_t offset) {
  return libvshadow_store_read_buffer_at_offset(
      library_->stores[copy], buffer.data(), buffer.size(), static_cast<off64_t>(offset), nullptr);
}

}  // namespace zanvik
