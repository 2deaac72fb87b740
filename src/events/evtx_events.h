// Events of an .evtx log: the visitor that makes an event of each record that a walk finds.
//
// In: chunks and record offsets, from walk_evtx_block. Out: an event for each record, in the order
// of the log, as far as it can be read: without its template it has its values, without any values
// its header. Templates and shapes are kept for all logs of the run; what an event contains depends
// on its chunk alone. Work is bounded for each chunk (limits.h).
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "events/event_shapes.h"
#include "events/event_view.h"
#include "events/fragment_structures.h"
#include "events/template_compiler.h"
#include "events/template_library.h"
#include "evtx/bxml/bxml_tokens.h"
#include "evtx/evtx.h"
#include "evtx/templates/template_bodies.h"

namespace zanvik {

using event_id_set = std::bitset<65536>;

class evtx_event_reader : public chunk_visitor {
 public:
  // Both must outlive the reader.
  explicit evtx_event_reader(event_sink& sink) : sink_(sink) {}
  evtx_event_reader(const evtx_event_reader&) = delete;
  evtx_event_reader& operator=(const evtx_event_reader&) = delete;

  // The log of the next chunks; it must outlive its events.
  void set_source(const log_source& source) { source_ = &source; }

  // Events whose ID is certainly not among these are not passed on; null for all.
  void take_event_ids(const event_id_set* ids) { event_ids_ = ids; }

  // For all events from now on.
  void set_flags(std::uint32_t flags) { flags_ = flags; }

  // Templates of chunks are added to the library, which must outlive the reader.
  void set_library(template_library* library) { library_ = library; }

  void start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                   std::uint64_t file_offset) override;
  // A part of a chunk, in a chunk whose other bytes are all ones: a template that does not fully
  // exist is taken from the library. The work budget for its records grows by the share that
  // `credit` bytes are of a chunk, up to that of one chunk.
  void start_fragment(std::span<const std::byte> chunk, std::uint64_t file_offset,
                      std::uint64_t credit);
  bool on_record(std::uint64_t offset) override;
  void on_slack_candidate(std::uint64_t offset, std::uint64_t area_bytes) override;

 private:
  // The template that a definition of this chunk is.
  struct place {
    std::uint32_t definition = 0;
    std::uint32_t template_id = 0;
    const event_template* body = nullptr;
  };
  using owned_template = std::unique_ptr<event_template>;

  void begin_chunk(const chunk_view& chunk);
  void add_credit(std::uint64_t bytes);
  bool is_unwanted(std::uint64_t fragment);
  bool brings_definition(std::uint64_t behind, const instance_head& head) const;
  const event_template* from_library(std::uint64_t behind, const instance_head& head,
                                     std::uint32_t slots) const;
  event_shape& shape_of_event();
  event_shape* affordable_shape();
  void read_event(std::uint64_t offset, std::uint32_t flags);
  std::uint16_t read_fragment(std::uint64_t offset, std::uint64_t end, unsigned depth,
                              std::uint32_t parent_slot);
  bool read_instance(std::uint64_t offset, const instance_head& head, event_instance& instance);
  void read_table(std::uint64_t table, event_instance& instance);
  void read_values(std::uint64_t table, std::uint32_t count, event_instance& instance);
  void place_values(const std::byte* descriptors, const std::byte* at,
                    std::span<event_value> values);
  std::uint32_t read_cut_values(const std::byte* descriptors, std::uint64_t first,
                                std::span<event_value> values);
  void add_kinds(std::size_t first);
  void read_nested(std::size_t instance, unsigned depth);
  const event_template* plain_body(std::uint64_t offset, std::uint64_t end,
                                   event_instance& instance);
  const event_template* template_at(const instance_head& head);
  const event_template* known_template(std::uint64_t definition, std::uint32_t size);
  const event_template* chunk_template(std::uint64_t definition, std::uint32_t size,
                                       bool id_matches);
  const event_template* missing_template(std::uint32_t slots, bool outermost);

  static constexpr std::size_t places = 256;  // a power of two, several times a chunk's templates

  event_sink& sink_;
  const log_source* source_ = nullptr;
  const event_id_set* event_ids_ = nullptr;
  std::uint32_t flags_ = 0;
  template_library* library_ = nullptr;
  bool fragment_ = false;  // the current chunk is a part of one
  work_budget budget_;
  bxml_memory memory_;
  // Bytes of templates that the chunk's events may still use; and of those whose shape is not
  // known.
  std::int64_t expansion_ = limits::expanded_bytes_per_chunk;
  std::int64_t new_shapes_ = limits::new_shape_bytes_per_chunk;
  chunk_view chunk_;
  std::uint64_t value_end_ = 0;
  std::uint64_t first_number_ = 0;
  std::uint64_t last_number_ = 0;

  template_bodies bodies_;
  std::map<std::uint64_t, owned_template> templates_;  // by the id of `bodies_`
  std::map<std::uint32_t, owned_template> missing_;
  std::vector<owned_template> chunk_templates_;  // of this chunk only
  // Fragments of the current event, kept for their memory.
  struct own_fragment {
    event_template body;
    fragment_texts texts;
  };
  std::vector<std::unique_ptr<own_fragment>> own_fragments_;
  std::size_t own_fragments_used_ = 0;
  std::array<place, places> places_{};
  fragment_structures structures_;
  event_shapes shapes_;
  std::uint64_t chunk_number_ = 0;  // of all that were read

  // The current event.
  bool cut_ = false;
  bool plain_ = false;  // a part of it is binary XML without a template
  std::vector<event_instance> instances_;
  std::vector<event_value> slots_;
  std::vector<std::uint64_t> kinds_;  // of the slots, see kind_bits
  event_view view_;
};

}  // namespace zanvik
