#include "inspect/carve_ledger.h"

#include <algorithm>
#include <vector>

#include "evtx/container/chunk.h"
#include "inspect/checksum.h"
#include "inspect/chunk_findings.h"
#include "inspect/event_facts.h"
#include "inspect/given_reader.h"
#include "source/block_reader.h"
#include "source/carver.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

class no_sink : public event_sink {
  void on_event(const event_view&) override {}
};

// Counts events that have no names, and hands all on.
class counting_sink : public event_sink {
 public:
  explicit counting_sink(event_sink& events) : events_(events) {}
  void on_event(const event_view& event) override {
    without_template += (event.header().flags & event_no_template) != 0;
    events_.on_event(event);
  }
  std::uint64_t without_template = 0;

 private:
  event_sink& events_;
};

class carve_account : public carve_watcher {
 public:
  carve_account(log_ledger& out, const log_source& source) : out_(out), reader_(source, nobody_) {}

  void on_chunk(std::span<const std::byte> chunk, std::uint64_t offset) override {
    // The search of slack may change it.
    copy_.assign(chunk.begin(), chunk.end());
    walked_chunk walked = walk_.walk(chunk);
    const given_records& given = reader_.read(copy_, offset)[0];
    out_.account.line(area_kind::read_elsewhere).records += settle_chunk(walked, given);
    out_.account.given_with_slack += given.plain.size() + given.slack.size();
    out_.account.declared += walked.header.declared().value_or(0);
    out_.chunks.push_back({.index = out_.chunks.size(), .offset = offset});
    find_in_chunk(chunk, walked, out_.chunks.back(), out_.findings);
    for (area part : walked.areas) {
      part.offset += offset;
      add(part);
    }
  }

  void on_run(const record_run& run, std::span<const std::byte> bytes) override {
    const byte_cursor in(bytes);
    std::uint64_t at = 0;
    if (run.place == 0) {
      add({run.offset, layout::chunk_header_bytes, area_kind::carved_header});
      at = layout::chunk_header_bytes;
      ++cut_chunks_;
    }
    while (in.has(at, layout::record_header_bytes)) {
      const auto size = in.at_or_zero<std::uint32_t>(at + 4);
      if (size == 0) break;
      add({run.offset + at, size, area_kind::carved_record, in.at_or_zero<std::uint64_t>(at + 8),
           in.at_or_zero<std::uint64_t>(at + 16)});
      at += size;
    }
  }

  void on_legacy_record(std::span<const std::byte> record, std::uint64_t offset) override {
    add({offset, record.size(), area_kind::carved_legacy,
         byte_cursor(record).at_or_zero<std::uint32_t>(8)});
  }

  void finish(std::uint64_t without_template) {
    out_.facts.push_back({"whole_chunks", std::uint64_t{out_.chunks.size()}});
    out_.facts.push_back({"cut_chunks", cut_chunks_});
    out_.facts.push_back({"records_without_template", without_template});
    out_.account.add(
        {0, out_.size - std::min(out_.size, out_.account.bytes()), area_kind::other_bytes});
  }

 private:
  // Bytes that lie under something else as well are counted once.
  void add(area part) {
    const std::uint64_t end = part.offset + part.size;
    part.size = end - std::min(end, std::max(part.offset, counted_to_));
    counted_to_ = std::max(counted_to_, end);
    out_.account.add(part);
    const bool alone =
        part.kind == area_kind::carved_record || part.kind == area_kind::carved_legacy;
    out_.account.given_with_slack += alone;
  }

  log_ledger& out_;
  no_sink nobody_;
  chunk_walk walk_;
  given_reader reader_;
  std::vector<std::byte> copy_;
  std::uint64_t counted_to_ = 0;
  std::uint64_t cut_chunks_ = 0;
};

// The sum of bytes that come with holes between them, which are zeros.
class sum_with_holes {
 public:
  void add(std::span<const std::byte> bytes, std::uint64_t offset) {
    fill(offset);
    sum_.add(bytes);
    at_ = offset + bytes.size();
  }
  void fill(std::uint64_t to) {
    static const std::vector<std::byte> zeros(1 << 16);
    while (at_ < to) {
      const auto size = std::min<std::uint64_t>(zeros.size(), to - at_);
      sum_.add(std::span(zeros).first(size));
      at_ += size;
    }
  }
  std::string finish() { return sum_.finish(); }

 private:
  sha256 sum_;
  std::uint64_t at_ = 0;
};

}  // namespace

void inspect_carved(const found_log& log, log_ledger& out) {
  out.format = "carved";
  event_facts facts(out);
  counting_sink sink(facts);
  carve_account account(out, log.source);
  carver work(sink, log.source, false);
  work.set_watcher(&account);
  sum_with_holes sum;
  std::span<std::byte> room;
  std::uint64_t offset = 0;
  const bool whole = read_into(
      log,
      [&](std::uint64_t at) {
        offset = at;
        return room = work.room(at);
      },
      [&](std::size_t bytes) {
        if (log.parts.empty()) sum.add(room.first(bytes), offset);
        work.take(bytes);
        if (log.is_stream) out.size = offset + bytes;
      });
  const bool kept = work.finish();
  account.finish(sink.without_template);
  facts.finish({}, 0);
  if (!whole || !kept) out.findings.add(finding_kind::unreadable, 0, "a part of the input");
  if (!whole || !log.parts.empty()) return;
  sum.fill(out.size);
  out.sha256 = sum.finish();
}

}  // namespace zanvik
