// The limits that keep work and memory in proportion to the input, each with the reason for its
// value. All are far above what a log that Windows wrote needs; what goes over one is lost, without
// a word, like any other damage.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik::limits {

// Slots in a substitution array. Part of the format as this reader takes it: more is refused.
inline constexpr std::uint32_t slots_per_table = 96;

// References to the environment that one path may follow, and the bytes it may grow to. A value is
// searched for further references, so a variable that names itself would never end. The system
// takes no path of more than 4,096 bytes, and a reference that leaves nothing behind serves nobody.
inline constexpr int references_in_path = 4096;
inline constexpr std::size_t expanded_path_bytes = 65536;

// How deep binary XML may nest in binary XML. Logs nest 2 deep; the stack takes hundreds.
inline constexpr unsigned nesting_depth = 24;

// The budgets below are bytes of a chunk's content that its records may consume together, as a
// multiple of the chunk's 65,536 bytes. Records that do not overlap consume each byte once or
// twice; crafted ones could make every record read the rest of the block.

// How far a chunk's records are followed from its start, searches for the next sound one included.
// Sizes lead out of a chunk only in damaged logs; in a file that is one block of chunks, each could
// lead through all that follow. A search starts from the last good record, so it can find records
// that were tried before, and they lead to the same search: only this ends that, where the chunk's
// header announces 2^64 records.
inline constexpr std::uint64_t record_walk_bytes = 4 * 65536;

// How far the marks of line ends may lengthen a text by repeating its rest, as a multiple of its
// length. Texts with "\n\r\n" in them repeat it once each, which is meant; one made of nothing else
// would grow with its square.
inline constexpr std::size_t marked_text_growth = 8;

// Longest text of a value that only a NUL ends: as much as a whole chunk.
inline constexpr std::size_t ansi_text_bytes = 65536;

// Slot tables, descriptors and values: what is rendered and kept is at most 3 times this.
inline constexpr std::int64_t slot_bytes_per_chunk = 4 * 65536;

// Binary XML outside templates (plain records and nested plain values), names by reference
// included: it is kept per record.
inline constexpr std::int64_t plain_bytes_per_chunk = 8 * 65536;

// The same for candidates from slack, which may be read from anywhere and run on into one another:
// a chunk of 29 plain records that were left there takes 11 times its length.
inline constexpr std::int64_t slack_bytes_per_chunk = 64 * 65536;

// Template bodies: a body is decoded again only for records off the usual road, 600 records of
// 3 KiB bodies at the most in a real chunk.
inline constexpr std::int64_t body_bytes_per_chunk = 64 * 65536;

// One layout: the names and literals that the bodies of a record give, in bytes of them that are
// looked at. A body that cites long names over and over could otherwise make a layout of megabytes,
// which each record would show. Bodies of logs at hand need 12 KB.
inline constexpr std::int64_t layout_bytes = 2 * 65536;

// What the layouts of a chunk's records hold together, as they do again in the columns, shapes and
// row plans that are made for them.
inline constexpr std::int64_t layout_bytes_per_chunk = 16 * 65536;

// Decoded templates kept for the records of later chunks, by count; more starts the cache anew.
inline constexpr std::size_t cached_layouts = 4096;
inline constexpr std::size_t cached_layout_bytes = 16 << 20;  // of names and literal values

// Columns, captions and names that records share, kept for the records of later logs, by count and
// bytes; more starts them anew. A folder of all logs of a machine has some 2,000 of them.
inline constexpr std::size_t shared_by_records = 16384;
inline constexpr std::size_t shared_by_records_bytes = 16 << 20;

// Blanks that pad the rows of one table, in bytes for each byte of its values and names: one record
// with long values would make all others as long. Short tables may have any.
inline constexpr std::size_t padding_per_byte = 16;
inline constexpr std::size_t padding_at_least = 16 << 20;

// What the records of a log may repeat of their templates: names of columns and literal values,
// which stand in each row or in the header of each table but only once in the log. Counted for each
// record that is kept, in bytes, against the log's. A record beyond it keeps its own values; its
// literals are left out and its names cut. The whole output of 389 real logs is at most 3.6 times
// the log.
inline constexpr std::int64_t repeated_bytes_per_byte = 32;
inline constexpr std::int64_t repeated_bytes_at_least = 1 << 20;
// Names are cut to this then.
inline constexpr std::size_t cut_name_bytes = 64;

// The texts of a legacy .evt log's records, all together, in bytes of UTF-16 that are looked at and
// a cost for each text. Texts may lie over one another and behind their record, so a small crafted
// record could name 65,535 long ones. A real log uses 0.9 times its size and cannot well come to
// more than 2, so this is 8 to 17 times above; only where first strings of more than 512 units make
// the others of their record lie within them does it count, and then up to 15 strings a record.
inline constexpr std::int64_t evt_cost_per_text = 16;
constexpr std::int64_t evt_text_budget(std::uint64_t file_bytes) {
  return static_cast<std::int64_t>(16 * file_bytes + (1 << 20));
}

// Strings of a legacy record, each a column of its table. Windows writes up to 256; without a limit
// one crafted record could make each row of a log 65,535 columns wide.
inline constexpr std::size_t evt_strings_per_record = 1024;

// Columns that the table layouts of one log may have together, one layout for each count of
// strings. All that records of up to 256 strings can have come to 66,000.
inline constexpr std::size_t evt_layout_columns = 1 << 18;

// Field columns of one table, and how far they may be padded together, in characters. Every row has
// all columns of its table: records that each bring names of their own would make a table grow with
// the square of the log. Columns that fewest records have are left out (a table of few records may
// have more of them), and what goes beyond the padding stands unpadded; 96 values of the greatest
// width come to 57,600. Logs at hand have 69 columns, padded to 2,103 characters.
inline constexpr std::size_t table_columns = 2048;
inline constexpr std::size_t table_padding = 65536;

// Slots in a table as the whole event has them: more than a provider can declare, and far fewer
// than fill a chunk.
inline constexpr std::uint32_t slots_per_event_table = 1024;

// How deep elements of an event nest, all templates together. Events nest 5 deep; readers of JSON
// and XML take 256 levels, of which an element may need two.
inline constexpr unsigned element_depth = 64;

// Bytes of the path of a field, each level of which repeats those above it.
inline constexpr std::size_t field_path_bytes = 512;

// Templates nested in one event; real ones have one.
inline constexpr std::size_t instances_per_event = 512;

// Bytes of template bodies that the events of one chunk are made of. A body of 60 KiB can be named
// by 14 bytes; a chunk of 300 small records of 4 KiB of templates each takes 18 times its length.
inline constexpr std::int64_t expanded_bytes_per_chunk = 64 * 65536;

// The same, of events of a shape that is not known yet, which takes much longer: a real chunk has
// some 30 of up to 8 KiB.
inline constexpr std::int64_t new_shape_bytes_per_chunk = 16 * 65536;

// Shapes of events kept for later ones. Their trees and fields are made again when they are needed.
inline constexpr std::size_t cached_shapes = 4096;
inline constexpr std::size_t cached_tree_bytes = 4 << 20;

// What `check` lists of one log: findings of each kind (more are counted), ranges of record numbers
// in a line of the account, and names of each sort that are counted apart. A log that was made to
// have a finding for each byte costs some 20 MiB of memory.
inline constexpr std::size_t findings_of_a_kind = 1000;
inline constexpr std::size_t number_ranges_of_a_line = 4096;
inline constexpr std::size_t counted_names = 4096;

// What carving keeps of templates for records that stand alone: bytes of them, and how many that
// begin with the same 4 bytes of a GUID. All templates of a Windows system come to some 20 MiB.
inline constexpr std::size_t carved_template_bytes = 64 << 20;
inline constexpr std::size_t templates_of_an_id = 8;

// Bytes of records that lie over one another, beside one for each byte of the input that is passed.
// Real ones do where a file took the place of another.
inline constexpr std::int64_t carved_overlap_bytes = 1 << 20;

// The largest legacy record that is carved, in bytes; the system writes up to 64 KiB of texts.
inline constexpr std::uint32_t carved_legacy_bytes = 256 << 10;

// Chunks whose checksums are worked out: so many, and one for each 4,096 bytes that are passed.
// Chunks that overlap are remains in clusters of that size.
inline constexpr std::int64_t carved_chunks_at_once = 64;
inline constexpr std::uint64_t bytes_per_carved_chunk = 4096;

// Records that carving keeps in memory until all templates are known; more go to a file.
inline constexpr std::size_t carved_bytes_in_memory = 16 << 20;

}  // namespace zanvik::limits
