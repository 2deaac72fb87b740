#include "hostile_builder.h"

#include "disk_bytes.h"
#include "evt_builder.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

constexpr const char* some_guid = "11111111-2222-3333-4455-667788990011";
constexpr std::uint16_t nested = 0x21;  // type of a slot that holds binary XML
constexpr std::uint32_t signature = 0x2a2a;

byte_vector bytes_of_chunk(const chunk_builder& chunk) { return chunk.build().bytes; }

// A record of only its 24 bytes of header, with any size.
void append_head(byte_vector& out, std::uint32_t size, std::uint64_t number) {
  append_u32(out, signature);
  append_u32(out, size);
  append_u64(out, number);
  append_u64(out, default_filetime(number % 1000));
}

// A chunk with these bytes after its header, which declares endless records.
byte_vector raw_chunk(const byte_vector& content) {
  byte_vector bytes = bytes_of_chunk(chunk_builder().declare(1, ~std::uint64_t{1}));
  set_u64(bytes, 16, 1);
  for (std::size_t i = 0; i < content.size() && 512 + i < bytes.size(); ++i) {
    bytes[512 + i] = content[i];
  }
  return bytes;
}

byte_vector sound(unsigned number) {
  chunk_builder chunk;
  for (unsigned i = 0; i < 150; ++i) chunk.add(record(150 * number + i + 1));
  return bytes_of_chunk(chunk);
}

// Appends a fragment header and a template instance.
void append_instance(byte_vector& out, std::uint32_t id, std::uint32_t definition) {
  append_bytes(out, bytes_of({0x0f, 1, 1, 0, 0x0c, 1}));
  append_u32(out, id);
  append_u32(out, definition);
}

// Records of 62 bytes whose definitions end at one chain, so this is the slot table of all. Every
// slot in it has size 0, so all slots of a table overlap.
byte_vector records_over(const byte_vector& chain) {
  constexpr std::size_t record_bytes = 24 + 14 + 24;
  const std::size_t chain_at = chunk_bytes - chain.size() - 64;
  byte_vector out;
  for (std::uint64_t number = 1; 512 + out.size() + record_bytes <= chain_at; ++number) {
    const auto definition = static_cast<std::uint32_t>(512 + out.size() + 24 + 14);
    append_head(out, record_bytes, number);
    append_instance(out, static_cast<std::uint32_t>(number), definition);
    append_u32(out, 0);
    append_u32(out, static_cast<std::uint32_t>(number));  // the GUID's first field
    append_zeros(out, 12);
    append_u32(out, static_cast<std::uint32_t>(chain_at - definition - 24));
  }
  out.resize(chain_at - 512);
  append_bytes(out, chain);
  return raw_chunk(out);
}

void append_table(byte_vector& out, unsigned count, std::uint16_t size, std::uint16_t type) {
  append_u32(out, count);
  for (unsigned i = 0; i < count; ++i) {
    append_u16(out, size);
    append_u16(out, type);
  }
}

// Each table contains the next one 96 times, 24 deep.
byte_vector nested_tables(unsigned) {
  byte_vector chain;
  for (int depth = 0; depth < 24; ++depth) {
    append_table(chain, 96, 0, nested);
    append_instance(chain, 1, 512 + 24 + 14);
  }
  return records_over(chain);
}

byte_vector empty_slots(unsigned) {
  byte_vector chain;
  append_table(chain, 96, 0, 1);
  return records_over(chain);
}

// Values of only ends of elements, a substitution and an end: wherever one begins, it reaches the
// same table, with 96 values that each begin one byte later.
byte_vector plain_in_plain(unsigned) {
  byte_vector out;
  append_head(out, 60000, 1);
  append_bytes(out, bytes_of({0x0f, 1, 1, 0}));
  for (int depth = 0; depth < 24; ++depth) {
    for (int i = 0; i < 96; ++i) append_u8(out, 4);
    append_bytes(out, bytes_of({0x0d, 0, 0, 1, 0}));
    append_table(out, 96, 1, nested);
  }
  return raw_chunk(out);
}

// A template whose user data is an instance of that same template, and so on.
byte_vector self_citing(unsigned) {
  const template_definition own{some_guid, [](bxml_builder& b) {
                                  b.fragment_header();
                                  for (int i = 0; i < 40; ++i) {
                                    b.open("UserData").close_start().optional_sub(0, nested);
                                    b.end_element();
                                  }
                                  b.end_of_stream();
                                }};
  const auto content = [&own](bxml_builder& b) {
    b.template_instance(own, {slot::bxml([&own](bxml_builder& inner) {
                          for (int depth = 0; depth < 20; ++depth) {
                            inner.instance_head_only(instance_head::with_fragment, 0x11111111,
                                                     512 + 24 + 14);
                            byte_vector table;
                            append_table(table, 96, 0, nested);
                            inner.raw(table);
                          }
                        })});
  };
  chunk_builder chunk;
  for (std::uint64_t number = 1; number <= 7; ++number) {
    chunk.add(plain_record(number, default_filetime(number), content));
  }
  return bytes_of_chunk(chunk);
}

// Candidates every 12 bytes.
byte_vector signatures_in_slack(unsigned) {
  byte_vector out;
  while (out.size() < 63000) {
    append_u32(out, signature);
    append_u32(out, 8);
    append_u32(out, 0x04040404);
  }
  return bytes_of_chunk(chunk_builder({record(1)}).free_tail(out));
}

// Candidates every 16 bytes, each a text that runs through half the chunk.
byte_vector texts_in_slack(unsigned) {
  byte_vector out;
  while (out.size() < 63000) {
    append_u32(out, signature);
    append_u32(out, 8);
    append_bytes(out, bytes_of({0x05, 1, 0xff, 0x3f, 0, 0, 0, 0}));
  }
  return bytes_of_chunk(chunk_builder({record(1)}).free_tail(out));
}

// Good records, each of which leads into one chain of bad ones, after which the search leads back
// to the next good one.
byte_vector round_and_round(unsigned) {
  byte_vector out;
  constexpr std::size_t chain_at = 32768;
  std::uint64_t number = 0;
  const byte_vector content = bytes_of({0x0f, 1, 1, 0, 1, 0xff, 0xff, 0, 0, 0, 0});
  while (out.size() + 512 + 64 < chain_at) {
    const std::size_t start = out.size();
    append_head(out, static_cast<std::uint32_t>(chain_at - 512 - start), ++number);
    append_bytes(out, content);
    const auto behind = static_cast<std::uint32_t>(512 + out.size() + 4);
    append_u32(out, behind);
    append_u32(out, 0);
    append_u16(out, 0);
    append_u16(out, 1);
    append_bytes(out, bytes_of({'A', 0, 0, 0, 2, 5, 1, 1, 0, 'v', 0, 4, 0}));
    append_zeros(out, (8 - out.size() % 8) % 8);
  }
  out.resize(chain_at - 512);
  while (out.size() < 64000) {
    append_u32(out, signature);
    append_u32(out, 12);
    append_u32(out, 0x0a0a0a0a);
  }
  return raw_chunk(out);
}

// Elements whose one name, elsewhere in the chunk, has 15,000 units.
byte_vector long_names(unsigned) {
  return bytes_of_chunk(chunk_builder({plain_record(1, default_filetime(1), [](bxml_builder& b) {
    b.fragment_header();
    for (int i = 0; i < 2000; ++i) b.open(std::string(15000, 'n'));
    b.end_of_stream();
  })}));
}

// Attributes of an element with such a name, which each of their fields repeats.
byte_vector long_prefixes(unsigned) {
  return bytes_of_chunk(chunk_builder({plain_record(1, default_filetime(1), [](bxml_builder& b) {
    b.fragment_header().open_with_attributes(std::string(15000, 'n'));
    for (int i = 0; i < 2000; ++i) b.attribute("a").value("v");
    b.close_empty().end_of_stream();
  })}));
}

// The same in a template whose slots have such names.
byte_vector long_slot_names(unsigned) {
  const template_definition own{some_guid, [](bxml_builder& b) {
                                  b.fragment_header().open_with_attributes(std::string(10000, 'n'));
                                  for (unsigned i = 0; i < 2600; ++i) {
                                    b.attribute("a").optional_sub(
                                        static_cast<std::uint16_t>(i % 96), 1);
                                  }
                                  b.close_empty().end_of_stream();
                                }};
  return bytes_of_chunk(chunk_builder({template_record(
      1, default_filetime(1), own, std::vector<slot_value>(96, slot::utf16("v")))}));
}

// One event in which every column has its own name, and many have none.
byte_vector wide_table(unsigned number) {
  chunk_builder chunk;
  chunk.add(plain_record(1, default_filetime(1), [number](bxml_builder& b) {
    b.fragment_header();
    for (unsigned i = 0; i < 600; ++i) {
      b.open("n" + std::to_string(1000 * number + i)).close_start().value("v").end_element();
    }
    b.end_of_stream();
  }));
  for (std::uint64_t i = 2; i < 400; ++i) {
    chunk.add(plain_record(i, default_filetime(i), [](bxml_builder& b) {
      b.fragment_header().open("A").close_start().value("v").end_element().end_of_stream();
    }));
  }
  return bytes_of_chunk(chunk);
}

// Templates that no other chunk has, each the body of one record.
byte_vector many_templates(unsigned number) {
  chunk_builder chunk;
  for (unsigned i = 0; i < 370; ++i) {
    const std::string name = "n" + std::to_string(1000 * number + i);
    std::string guid = std::to_string(10000000 + (1000 * number + i) % 80000000);
    guid += "-2222-3333-4455-667788990011";
    chunk.add(template_record(
        i + 1, default_filetime(i),
        {guid,
         [name](bxml_builder& b) {
           b.fragment_header().open(name).close_start().normal_sub(0, 1).end_element();
           b.end_of_stream();
         }},
        {slot::utf16("v")}));
  }
  return bytes_of_chunk(chunk);
}

// A chunk with as many records of one template as fit.
byte_vector records_of(const template_definition& definition, unsigned count) {
  chunk_builder chunk;
  for (unsigned i = 0; i < count; ++i) {
    chunk.add(template_record(i + 1, default_filetime(i), definition, {slot::uint16(7)}));
  }
  return bytes_of_chunk(chunk);
}

// Records of a body that is not recognised, because a token in it has an unusual flag.
byte_vector unrecognised_body(unsigned) {
  return records_of({some_guid,
                     [](bxml_builder& b) {
                       b.fragment_header().raw(bytes_of({4}));
                       for (int i = 0; i < 2000; ++i) b.raw(bytes_of({0x44}));
                       b.open("EventID").close_start().normal_sub(0, 6).end_element();
                       b.end_of_stream();
                     }},
                    700);
}

// A body that uses one long name thousands of times.
byte_vector cited_names(unsigned) {
  return records_of({some_guid,
                     [](bxml_builder& b) {
                       b.fragment_header().open_with_attributes("E");
                       for (int i = 0; i < 4000; ++i) b.attribute(std::string(5000, 'n'));
                       b.close_start().normal_sub(0, 6).end_element().end_of_stream();
                     }},
                    300);
}

// A body with a literal made by long names, which each record shows.
byte_vector long_literal(unsigned) {
  return records_of({some_guid,
                     [](bxml_builder& b) {
                       b.fragment_header().open("A").close_start();
                       for (int i = 0; i < 4000; ++i) b.entity_ref(std::string(5000, 'n'));
                       b.end_element().end_of_stream();
                     }},
                    300);
}

// Copies of one template that differ in a literal, a variant in each chunk.
byte_vector template_variants(unsigned number) {
  return records_of({some_guid,
                     [number](bxml_builder& b) {
                       b.fragment_header().text_element("A", "v" + std::to_string(number));
                       b.open("EventID").close_start().normal_sub(0, 6).end_element();
                       b.end_of_stream();
                     }},
                    700);
}

// One body with many literals, and records with every number of slots: a layout for each.
byte_vector layout_for_each_count(unsigned) {
  const template_definition own{some_guid, [](bxml_builder& b) {
                                  b.fragment_header();
                                  for (int i = 0; i < 700; ++i) {
                                    b.text_element("n" + std::to_string(i), "");
                                    b.raw(bytes_of({5, 1, 1, 0, 'v', 0}));
                                  }
                                  b.end_of_stream();
                                }};
  chunk_builder chunk;
  for (unsigned count = 0; count < 90; ++count) {
    chunk.add(template_record(count + 1, default_filetime(count), own,
                              std::vector<slot_value>(count, slot::uint8(1))));
  }
  return bytes_of_chunk(chunk);
}

// Records of a few bytes under a template with long literals, each event with its own table:
// literals would be in every row, names in every header.
byte_vector long_literals(unsigned number) {
  const template_definition own{some_guid, [](bxml_builder& b) {
                                  b.fragment_header();
                                  for (char c = 'a'; c <= 'h'; ++c) {
                                    b.open(std::string(200, c)).close_start();
                                    b.value(std::string(1500, c)).end_element();
                                  }
                                  b.open("EventID").close_start().normal_sub(0, 6).end_element();
                                  b.end_of_stream();
                                }};
  chunk_builder chunk;
  for (std::uint16_t i = 0; i < 400; ++i) {
    const auto id = static_cast<std::uint16_t>(400 * number + i);
    chunk.add(template_record(i + 1, default_filetime(i), own, {slot::uint16(id)}));
  }
  return bytes_of_chunk(chunk);
}

// Texts that line-end marks make longer.
byte_vector line_ends(unsigned) {
  std::string text;
  while (text.size() < 3000) text += "\n\r\n";
  event content;
  content.data = {{"Text", slot::utf16(text)}};
  chunk_builder chunk;
  for (std::uint64_t number = 1; number <= 9; ++number) chunk.add(record(number, content));
  return bytes_of_chunk(chunk);
}

// Extended tables that refer to one another, one in each sector.
byte_vector partition_chains(unsigned) {
  constexpr std::uint32_t sectors = 110;
  std::vector<table_row> rows = {{0, 0, 5, 1, 1}};
  for (std::uint32_t sector = 1; sector < sectors; ++sector) {
    for (std::size_t i = 0; i < 3; ++i) rows.push_back({sector, i, 6, 1, 1});
    rows.push_back({sector, 3, 5, sector == sectors - 1 ? 0 : sector, 1});
  }
  event content{.event_id = 1006, .channel = "Microsoft-Windows-Partition/Diagnostic"};
  content.data = {{"Mbr", slot::binary(disk_bytes(sectors * 512, rows))}};
  return bytes_of_chunk(chunk_builder({record(1, content)}));
}

byte_vector legacy_log(unsigned chunks) {
  evt_builder log;
  const std::string letters(500, 'a');
  log.add({.strings = std::vector<std::string>(1100, "x")});  // makes the rows of all wide
  while (log.size() < std::size_t{chunks} * chunk_bytes) {
    // Heads one after the other; the strings of all follow the last.
    log.add({.source = "s", .computer = "c", .num_strings = 0xffff, .string_offset = 8});
    if (log.record_count() % 64 == 0) log.add({.strings = {letters}, .num_strings = 0xffff});
  }
  return log.cursor().bytes();
}

const std::vector<hostile_trick>& tricks() {
  static const std::vector<hostile_trick> all = {
      {"sound", {"-csv"}, "a.evtx", sound},
      {"sound, padded", {}, "a.evtx", sound},
      {"slot tables in slot tables", {"-csv"}, "a.evtx", nested_tables},
      {"96 slots of size 0", {"-csv"}, "a.evtx", empty_slots},
      {"plain streams in plain streams", {"-csv"}, "a.evtx", plain_in_plain},
      {"a template that cites itself", {"-csv"}, "a.evtx", self_citing},
      {"slack full of signatures", {"-csv", "-inc_slack"}, "a.evtx", signatures_in_slack},
      {"slack full of texts", {"-csv", "-inc_slack"}, "a.evtx", texts_in_slack},
      {"searches that lead round", {"-csv", "-inc_slack"}, "a.evtx", round_and_round},
      {"long names by reference", {"-csv"}, "a.evtx", long_names},
      {"long names of elements", {"-csv"}, "a.evtx", long_prefixes},
      {"long names of slots", {"-csv"}, "a.evtx", long_slot_names},
      {"a table of many columns", {"-csv"}, "a.evtx", wide_table},
      {"the same, padded", {}, "a.evtx", wide_table},
      {"templates without end", {"-csv"}, "a.evtx", many_templates},
      {"a body that is not recognised", {"-csv"}, "a.evtx", unrecognised_body},
      {"a name cited thousands of times", {"-csv"}, "a.evtx", cited_names},
      {"a literal of long names", {"-csv"}, "a.evtx", long_literal},
      {"variants of one template", {"-csv"}, "a.evtx", template_variants},
      {"a layout for each count of slots", {"-csv"}, "a.evtx", layout_for_each_count},
      {"literals and headers for each record", {"-csv"}, "a.evtx", long_literals},
      {"the same, as a timeline", {"-csvl2t"}, "a.evtx", long_literals},
      {"the same, from slack", {"-csv", "-inc_slack"}, "a.evtx", long_literals},
      {"line ends to be marked", {"-csv"}, "a.evtx", line_ends},
      {"partition chains",
       {"-csv", "-partition_metadata"},
       "windows-partition.evtx",
       partition_chains},
      {"legacy strings that overlap", {"-csv"}, "a.evt", nullptr},
  };
  return all;
}

}  // namespace

std::span<const hostile_trick> hostile_tricks() { return tricks(); }

byte_vector hostile_log(const hostile_trick& trick, unsigned chunks) {
  if (!trick.chunk) return legacy_log(chunks);
  byte_vector log = bytes_of(std::string_view("ElfFile\0", 8));
  log.resize(file_header_bytes);
  for (unsigned i = 0; i < chunks; ++i) append_bytes(log, trick.chunk(i));
  return log;
}

}  // namespace zanvik::testing
