// Events of logs in memory, in a form, and the logs that tests of whole events use.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "events/evt_events.h"
#include "events/evtx_events.h"
#include "export/event_form.h"
#include "log_builder.h"
#include "reference/plain_events.h"
#include "samples_builder.h"
#include "scratch_dir.h"

namespace zanvik::testing {

// Bytes in memory of exactly their size, so that every read past their end is noticed.
class own_bytes {
 public:
  explicit own_bytes(std::span<const std::byte> bytes)
      : size_(bytes.size()), bytes_(new std::byte[bytes.size()]) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
  }
  std::span<std::byte> span() { return {bytes_.get(), size_}; }

 private:
  std::size_t size_;
  std::unique_ptr<std::byte[]> bytes_;
};

// Writes the events that it gets in a form.
class writing_sink : public event_sink {
 public:
  explicit writing_sink(std::string_view form) : out_(text_) {
    for (const form_name& known : form_names()) {
      if (known.name == form) form_ = known.make({});
    }
    form_->begin(out_);
    form_->start_log(source_);
  }
  void on_event(const event_view& event) override { form_->write(out_, event); }
  const log_source& source() const { return source_; }
  std::string take() {
    form_->end(out_);
    out_.flush();
    return std::move(text_);
  }

 private:
  log_source source_{"a.evtx", "", log_kind::evtx};
  std::string text_;
  output_buffer out_;
  std::unique_ptr<event_form> form_;
};

// The block of an .evtx log in a form. The same reader may be used for many blocks.
inline std::string exported(std::span<const std::byte> block, std::string_view form,
                            bool slack = false, std::uint64_t base = 0) {
  own_bytes bytes(block);
  writing_sink sink(form);
  evtx_event_reader reader(sink);
  reader.set_source(sink.source());
  walk_settings settings;
  settings.inc_slack = slack;
  walk_evtx_block(bytes.span(), base, reader, settings);
  return sink.take();
}

inline std::string exported(const file_bytes& log, std::string_view form) {
  return exported(log.bytes(), form);
}

// Chunks of all samples, each a separate block.
inline std::vector<byte_vector> sample_chunks() {
  std::vector<byte_vector> chunks;
  for (const log_builder& log : {security_sample(), system_sample(), odd_sample()}) {
    const auto bytes = std::span(log.bytes());
    for (std::size_t at = file_header_bytes; at + chunk_bytes <= bytes.size(); at += chunk_bytes) {
      const auto chunk = bytes.subspan(at, chunk_bytes);
      chunks.emplace_back(chunk.begin(), chunk.end());
    }
  }
  return chunks;
}

}  // namespace zanvik::testing
