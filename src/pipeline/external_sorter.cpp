#include "pipeline/external_sorter.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include "pipeline/sorted_input.h"

namespace zanvik {
namespace {

constexpr std::size_t write_bytes = std::size_t{256} << 10;
// With smaller buffers a disk would seek for every few items.
constexpr std::uint64_t least_buffer = std::uint64_t{64} << 10;
constexpr std::uint64_t largest_buffer = std::uint64_t{4} << 20;
// An item in the file: its key, its size, its bytes.
struct item_head {
  sort_key key;
  std::uint64_t bytes = 0;
};

}  // namespace

// Appends items to the file through a buffer.
class external_sorter::run_writer {
 public:
  explicit run_writer(temporary_file& file) : file_(file), begin_(file.size()) {
    buffer_.reserve(write_bytes);
  }

  bool add(const sort_key& key, std::string_view bytes) {
    const item_head head{key, bytes.size()};
    append({reinterpret_cast<const char*>(&head), sizeof(head)});
    append(bytes);
    return file_.error().empty();
  }
  // The run, which stands in the file then if that has no error.
  run finish() {
    flush();
    return {begin_, file_.size() - begin_};
  }

 private:
  void append(std::string_view bytes) {
    if (bytes.size() > write_bytes - buffer_.size()) flush();
    if (bytes.size() > write_bytes) {
      (void)file_.append(bytes);  // the file keeps its error
    } else {
      buffer_.append(bytes);
    }
  }
  void flush() {
    (void)file_.append(buffer_);
    buffer_.clear();
  }

  temporary_file& file_;
  std::uint64_t begin_;
  std::string buffer_;
};

// Items of a run, in order. Bytes are read only when the item's turn has come, so that only one
// large item is in memory at a time, in `large`, which all inputs share.
class external_sorter::run_input : public sorted_input {
 public:
  run_input(temporary_file& file, run where, std::size_t buffer_bytes, std::string& large)
      : file_(file),
        at_(where.offset),
        end_(where.offset + where.bytes),
        capacity_(buffer_bytes),
        buffer_(new char[buffer_bytes]),
        large_(large) {}

  bool next() override {
    at_ += item_bytes_;
    item_bytes_ = 0;
    if (at_ >= end_ || !load(sizeof(item_head))) return false;
    item_head head;
    std::memcpy(&head, here(), sizeof(head));
    key_ = head.key;
    at_ += sizeof(head);
    item_bytes_ = head.bytes;
    return true;
  }

  std::string_view bytes() override {
    if (item_bytes_ <= capacity_) {
      return load(item_bytes_) ? std::string_view(here(), item_bytes_) : std::string_view();
    }
    large_.resize(item_bytes_);
    return file_.read(at_, large_) ? std::string_view(large_) : std::string_view();
  }

 private:
  const char* here() const { return buffer_.get() + (at_ - loaded_from_); }
  // Makes sure that `bytes` from the position on are in the buffer.
  bool load(std::uint64_t bytes) {
    if (at_ >= loaded_from_ && at_ + bytes <= loaded_to_) return true;
    loaded_from_ = at_;
    loaded_to_ = std::min<std::uint64_t>(end_, at_ + capacity_);
    return file_.read(loaded_from_, {buffer_.get(), loaded_to_ - loaded_from_});
  }

  temporary_file& file_;
  std::uint64_t at_, end_;
  std::uint64_t item_bytes_ = 0;  // of the item in hand, whose bytes begin at `at_`
  std::size_t capacity_;
  std::unique_ptr<char[]> buffer_;
  std::uint64_t loaded_from_ = 0, loaded_to_ = 0;
  std::string& large_;
};

external_sorter::external_sorter(const sort_settings& settings)
    : memory_bytes_(static_cast<std::size_t>(std::max(settings.memory_bytes, least_sort_memory)) /
                    sizeof(entry) * sizeof(entry)),
      folder_(settings.folder) {}

// Memory that is never written to costs nothing, so all of it is requested at once.
bool external_sorter::allocate() {
  if (memory_) return true;
  memory_.reset(new (std::nothrow) char[memory_bytes_]);
  return memory_ || fail("there is no memory of " + std::to_string(memory_bytes_) + " bytes");
}

bool external_sorter::add(const sort_key& key, std::string_view bytes) {
  if (!error_.empty() || !allocate()) return false;
  // The buffer through which runs are written is part of the memory.
  const std::size_t all = memory_bytes_ - write_bytes;
  const auto room = [&] { return all - used_ - count_ * sizeof(entry); };
  const std::size_t wanted = bytes.size() + sizeof(entry);
  if (wanted > room() && count_ != 0 && !write_run()) return false;
  if (wanted > room()) {
    if (!open_file()) return false;
    run_writer writer(file_);
    (void)writer.add(key, bytes);
    runs_.push_back(writer.finish());
    ++runs_written_;
    return file_.error().empty() || fail(file_.error());
  }
  if (!bytes.empty()) std::memcpy(memory_.get() + used_, bytes.data(), bytes.size());
  ++count_;
  *entries() = {key, used_, bytes.size()};
  used_ += bytes.size();
  return true;
}

void external_sorter::sort_entries() {
  const auto before = [](const entry& a, const entry& b) {
    if (a.key != b.key) return a.key < b.key;
    // In order of arrival; one without bytes shares its offset with the next.
    return a.offset != b.offset ? a.offset < b.offset : a.bytes < b.bytes;
  };
  entry* const first = entries();
  entry* const last = first + count_;
  // What arrived in order is stored in reverse.
  std::reverse(first, last);
  if (!std::is_sorted(first, last, before)) std::sort(first, last, before);
}

bool external_sorter::write_run() {
  if (!open_file()) return false;
  sort_entries();
  run_writer writer(file_);
  const entry* const sorted = entries();
  for (std::size_t i = 0; i < count_; ++i) {
    const std::string_view bytes(memory_.get() + sorted[i].offset, sorted[i].bytes);
    if (!writer.add(sorted[i].key, bytes)) break;
  }
  runs_.push_back(writer.finish());
  ++runs_written_;
  used_ = count_ = 0;
  return file_.error().empty() || fail(file_.error());
}

bool external_sorter::open_file() {
  return file_.is_open() || file_.create(folder_) || fail(file_.error());
}

bool external_sorter::finish(const item_use& use) {
  if (!error_.empty()) return false;
  if (runs_.empty()) {
    if (count_ == 0) return true;
    sort_entries();
    const entry* const sorted = entries();
    const std::size_t count = std::exchange(count_, 0);
    used_ = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const std::string_view bytes(memory_.get() + sorted[i].offset, sorted[i].bytes);
      if (!use(sorted[i].key, bytes)) return false;
    }
    memory_.reset();
    return true;
  }
  if (count_ != 0 && !write_run()) return false;
  memory_.reset();
  if (!merge_passes()) return false;
  const std::uint64_t share = memory_bytes_ / runs_.size();
  const bool done = merge(std::exchange(runs_, {}), share, use);
  file_.close();
  return done;
}

// Merges neighbouring runs until the rest can be merged at once.
bool external_sorter::merge_passes() {
  const std::size_t most = std::max<std::size_t>(2, memory_bytes_ / least_buffer);
  while (runs_.size() > most) {
    temporary_file next;
    if (!next.create(folder_)) return fail(next.error());
    std::vector<run> merged;
    for (std::size_t i = 0; i < runs_.size(); i += most) {
      const std::size_t end = std::min(runs_.size(), i + most);
      run_writer writer(next);
      const bool done = merge(
          {runs_.begin() + static_cast<std::ptrdiff_t>(i),
           runs_.begin() + static_cast<std::ptrdiff_t>(end)},
          (memory_bytes_ - write_bytes) / (end - i),
          [&](const sort_key& key, std::string_view bytes) { return writer.add(key, bytes); });
      merged.push_back(writer.finish());
      ++runs_written_;
      if (!next.error().empty()) return fail(next.error());
      if (!done) return false;
    }
    file_.swap(next);
    runs_ = std::move(merged);
  }
  return true;
}

bool external_sorter::merge(std::vector<run> runs, std::uint64_t buffer_bytes,
                            const item_use& use) {
  buffer_bytes = std::min(buffer_bytes, largest_buffer);
  std::string large;
  std::vector<std::unique_ptr<run_input>> inputs;
  std::vector<sorted_input*> each;
  for (const run& where : runs) {
    const std::size_t bytes = std::min(buffer_bytes, where.bytes);
    inputs.push_back(std::make_unique<run_input>(file_, where, bytes, large));
    each.push_back(inputs.back().get());
  }
  const bool done = merge_inputs(each, [&](const sort_key& key, std::string_view bytes) {
    return file_.error().empty() && use(key, bytes);
  });
  if (!file_.error().empty()) return fail(file_.error());
  return done;
}

bool external_sorter::fail(const std::string& what) {
  error_ = what;
  return false;
}

}  // namespace zanvik
