// The limits that keep work and memory in proportion to the input, each with the reason for its
// value. All are far above what a log written by Windows needs. An item that exceeds one is lost
// without a message, like other damage.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik::limits {

// Slots in a substitution array. Part of the format as this reader accepts it: more is refused.
inline constexpr std::uint32_t slots_per_table = 96;

// References to the environment that one path may follow, and the bytes it may grow to. A value is
// searched for further references, so a variable that names itself would never end. The system
// accepts no path of more than 4,096 bytes.
inline constexpr int references_in_path = 4096;
inline constexpr std::size_t expanded_path_bytes = 65536;

// How deep binary XML may nest in binary XML. Real logs nest 2 deep; the stack has room for
// hundreds.
inline constexpr unsigned nesting_depth = 24;

// The budgets below are bytes of a chunk's content that its records may consume together, as a
// multiple of the chunk's 65,536 bytes. Records that do not overlap consume each byte once or
// twice; crafted records could each read the rest of the block.

// How far a chunk's records are followed from its start, including searches for the next sound one.
// Sizes reach past a chunk only in damaged logs; in a block of such chunks, each could lead through
// all that follow. A search starts from the last good record, so it can find records that were
// tried before, and these lead to the same search. If the chunk's header declares 2^64 records,
// only this limit ends that.
inline constexpr std::uint64_t record_walk_bytes = 4 * 65536;

// How much longer line-end marks may make a text by repeating its rest, as a multiple of its
// length. A text with "\n\r\n" repeats it once each time, which is meant; a text made of nothing
// else would grow with its square.
inline constexpr std::size_t marked_text_growth = 8;

// Longest text of a value that ends only at a NUL: the length of a chunk.
inline constexpr std::size_t ansi_text_bytes = 65536;

// Slot tables, descriptors and values: what is rendered and kept is at most 3 times this.
inline constexpr std::int64_t slot_bytes_per_chunk = 4 * 65536;

// Binary XML outside templates (plain records and nested plain values), including names by
// reference: it is kept per record.
inline constexpr std::int64_t plain_bytes_per_chunk = 8 * 65536;

// The same for records from free space, which may start anywhere and overlap: a chunk with 29 old
// plain records needs 11 times its length.
inline constexpr std::int64_t slack_bytes_per_chunk = 64 * 65536;

// Template bodies. A body is decoded again only for records off the usual path: in a real chunk, at
// most 600 records with bodies of 3 KiB.
inline constexpr std::int64_t body_bytes_per_chunk = 64 * 65536;

// One layout: the bytes of names and literals in the bodies of a record that are read. Otherwise a
// body that repeats long names could make a layout of megabytes, which each record would show.
// Bodies of real logs need 12 KB.
inline constexpr std::int64_t layout_bytes = 2 * 65536;

// The layouts of a chunk's records together. The columns, shapes and row plans made for them need
// as much again.
inline constexpr std::int64_t layout_bytes_per_chunk = 16 * 65536;

// Decoded templates kept for the records of later chunks; beyond this the cache is emptied.
inline constexpr std::size_t cached_layouts = 4096;
inline constexpr std::size_t cached_layout_bytes = 16 << 20;  // of names and literal values

// Columns, captions and names that records share, kept for the records of later logs, by count and
// bytes; beyond this they are dropped. A folder with all logs of a machine has some 2,000 of them.
inline constexpr std::size_t shared_by_records = 16384;
inline constexpr std::size_t shared_by_records_bytes = 16 << 20;

// Blanks that pad the rows of one table, in bytes for each byte of its values and names: one record
// with long values would make all others as long. Short tables are not limited.
inline constexpr std::size_t padding_per_byte = 16;
inline constexpr std::size_t padding_at_least = 16 << 20;

// How much of their templates the records of a log may repeat: names of columns and literal values,
// which are in each row or in the header of each table but only once in the log. Counted for each
// kept record of a block, in bytes, and compared with the block's size, so that blocks can be read
// on their own. A record beyond it keeps its own values;
// its literals are left out and its names cut. The whole output of 389 real logs is at most 3.6
// times the log.
inline constexpr std::int64_t repeated_bytes_per_byte = 32;
inline constexpr std::int64_t repeated_bytes_at_least = 1 << 20;
// Names are then cut to this length.
inline constexpr std::size_t cut_name_bytes = 64;

// The texts of a legacy .evt log's records together, in bytes of UTF-16 that are read plus a cost
// for each text. Texts may overlap and lie past their record, so a small crafted record could name
// 65,535 long ones. A real log uses 0.9 times its size and hardly more than 2, so this is 8 to 17
// times more. An exception are first strings of more than 512 units that contain the other strings
// of their record: each counts up to 15 times.
inline constexpr std::int64_t evt_cost_per_text = 16;
constexpr std::int64_t evt_text_budget(std::uint64_t file_bytes) {
  return static_cast<std::int64_t>(16 * file_bytes + (1 << 20));
}

// Longest record of a legacy log that is read a part at a time, for events. Real ones stay below
// 64 KiB; the classic listing has the whole log in memory and takes any.
inline constexpr std::uint64_t evt_record_bytes = 4 << 20;

// Strings of a legacy record, each a column of its table. Windows writes up to 256; without a limit
// one crafted record could make every row of a log 65,535 columns wide.
inline constexpr std::size_t evt_strings_per_record = 1024;

// Columns of all table layouts of one log, with one layout for each number of strings. Records of
// up to 256 strings need at most 66,000.
inline constexpr std::size_t evt_layout_columns = 1 << 18;

// Field columns of one table, and how far they may be padded together, in characters. Every row has
// all columns of its table: if each record had its own names, a table would grow with the square of
// the log. The columns that the fewest records have are left out (a table of few records may have
// more of them), and columns beyond the padding limit are not padded; 96 values of maximum width
// need 57,600. Real logs have up to 69 columns, padded to 2,103 characters.
inline constexpr std::size_t table_columns = 2048;
inline constexpr std::size_t table_padding = 65536;

// Slots in the table of a whole event: more than a provider can declare, and far fewer than fill a
// chunk.
inline constexpr std::uint32_t slots_per_event_table = 1024;

// How deep elements of an event nest, all templates together. Real events nest 5 deep; readers of
// JSON and XML accept 256 levels, and an element may need two.
inline constexpr unsigned element_depth = 64;

// Bytes of the path of a field; each level repeats those above it.
inline constexpr std::size_t field_path_bytes = 512;

// Templates nested in one event; real ones have one.
inline constexpr std::size_t instances_per_event = 512;

// Bytes of template bodies used by the events of one chunk. 14 bytes can name a body of 60 KiB; a
// chunk of 300 small records with 4 KiB of templates each needs 18 times its length.
inline constexpr std::int64_t expanded_bytes_per_chunk = 64 * 65536;

// The same for events whose shape is not known yet, which takes much longer: a real chunk has some
// 30 of up to 8 KiB.
inline constexpr std::int64_t new_shape_bytes_per_chunk = 16 * 65536;

// Structures of fragments without a template that are kept, so that records of one kind share a
// shape: real logs have some ten.
inline constexpr std::size_t cached_fragments = 256;
inline constexpr std::size_t cached_fragment_bytes = 1 << 20;

// Shapes of events kept for later ones. Their trees and fields are made again when needed.
inline constexpr std::size_t cached_shapes = 4096;
inline constexpr std::size_t cached_tree_bytes = 2 << 20;

// Programs of a form that are kept, one for each shape: 2,000 of an ordinary size.
inline constexpr std::size_t cached_program_bytes = 4 << 20;

// What `check` lists for one log: findings of each kind (more are counted), ranges of record
// numbers in a line of the account, and names of each sort that are counted separately. A log
// crafted to have a finding in every byte costs some 20 MiB of memory.
inline constexpr std::size_t findings_of_a_kind = 1000;
inline constexpr std::size_t number_ranges_of_a_line = 4096;
inline constexpr std::size_t counted_names = 4096;

// Templates that carving keeps for records outside chunks: their bytes, and how many begin with the
// same 4 bytes of a GUID. All templates of a Windows system need some 20 MiB.
inline constexpr std::size_t carved_template_bytes = 64 << 20;
inline constexpr std::size_t templates_of_an_id = 8;

// Bytes of overlapping records, in addition to one for each byte of the input read so far. Real
// records overlap where a file replaced another.
inline constexpr std::int64_t carved_overlap_bytes = 1 << 20;

// The largest legacy record that is carved, in bytes; Windows writes up to 64 KiB of texts.
inline constexpr std::uint32_t carved_legacy_bytes = 256 << 10;

// Chunks whose checksums are computed: this many, plus one for each 4,096 bytes read so far.
// Overlapping chunks are remains in clusters of that size.
inline constexpr std::int64_t carved_chunks_at_once = 64;
inline constexpr std::uint64_t bytes_per_carved_chunk = 4096;

// What is looked at in a disk image: files of one of its volumes, logs of all, and pieces of free
// space of a volume. A disk of many terabytes has fewer.
inline constexpr std::uint64_t files_of_a_volume = 50'000'000;
inline constexpr std::size_t logs_of_an_image = 1'000'000;
inline constexpr std::size_t extents_of_a_volume = 8'000'000;

// Records that carving keeps in memory until all templates are known; more go to a file.
inline constexpr std::size_t carved_bytes_in_memory = 16 << 20;

// Several threads: results that wait for those of an earlier part, in bytes for each thread (the
// block in hand and what a thread keeps of templates fit beside them into 32 MiB), and the parts
// whose work has begun, since each may hold an open file.
inline constexpr std::uint64_t waiting_bytes_per_thread = 12 << 20;
inline constexpr std::size_t jobs_per_thread = 64;
// The result of a part that is still at work, in bytes: from here on it waits for its turn and is
// then passed on as it is made.
inline constexpr std::uint64_t part_result_bytes = 8 << 20;
// Threads of a run. Each holds a file open.
inline constexpr unsigned threads = 256;

}  // namespace zanvik::limits
