// Bytes that may hold chunks and records anywhere: what carving gives of them does not depend on
// the pieces that they come in, and each byte has its line in the ledger.
#include <algorithm>
#include <string>

#include "export/event_form.h"
#include "fuzz_target.h"
#include "source/carver.h"
#include "source/crc32.h"

namespace zanvik::fuzz {
namespace {

constexpr std::uint8_t mended = 8;  // chunks get the checksums that their bytes have
constexpr std::uint8_t as_log = 16;

void set_u32(std::span<std::byte> bytes, std::size_t at, std::uint32_t value) {
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

void mend(std::span<std::byte> chunk) {
  if (chunk.size() < evtx_layout::chunk_bytes) return;
  std::uint32_t end;
  std::memcpy(&end, chunk.data() + 48, sizeof end);
  if (end < 512 || end > evtx_layout::chunk_bytes) set_u32(chunk, 48, end = 512 + end % 65024);
  set_u32(chunk, 40, 128);
  set_u32(chunk, 52, crc32_of(chunk.subspan(512, end - 512)));
  set_u32(chunk, 124, crc32_of(chunk.subspan(128, 384), crc32_of(chunk.first(120))));
}

class writing : public event_sink {
 public:
  writing() : out_(text), form_(form_names().front().make({})) {}
  void on_event(const event_view& event) override { form_->write(out_, event); }
  std::string& finish() {
    out_.flush();
    return text;
  }

 private:
  std::string text;
  output_buffer out_;
  std::unique_ptr<event_form> form_;
};

std::string carved(std::span<const std::byte> bytes, std::size_t piece, bool slack) {
  writing sink;
  const log_source source{"a", "", log_kind::evtx};
  carver work(sink, source, slack);
  for (std::size_t at = 0; at < bytes.size();) {
    const auto room = work.room(at);
    const std::size_t size = std::min({piece, room.size(), bytes.size() - at});
    std::copy_n(bytes.begin() + std::ptrdiff_t(at), size, room.begin());
    work.take(size);
    at += size;
  }
  require(work.finish(), "all runs are kept");
  return sink.finish();
}

}  // namespace

ZANVIK_FUZZ_TARGET(carve) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  const auto piece = in.take<std::uint16_t>();
  std::vector<std::byte> all(in.rest().begin(), in.rest().end());
  if (flags & as_log) all = unpacked_log(in.rest(), flags & (log_without_header | log_cut_short));
  if (flags & mended) {
    const std::size_t first = flags & log_without_header ? 0 : evtx_layout::file_header_bytes;
    for (std::size_t at = first; at < all.size(); at += evtx_layout::chunk_bytes) {
      mend(std::span(all).subspan(at));
    }
  }
  const bool slack = flags & 1;
  const std::string whole = carved(all, all.size(), slack);
  require_equal(carved(all, 64 + piece, slack), whole, "what comes of other pieces");
  require(whole.size() <= (8u << 20) + 4096 * all.size(), "the output is in proportion");
}

}  // namespace zanvik::fuzz
