// Replaces binary slots with readable text, as a command asks.
//
// In: a decoded record that passed the command's tests. Out: the same with texts for the slots that
// the command names. Names are compared exactly, here as nowhere else, which is meant. A slot whose
// value cannot be made into text keeps it. From then on every look-up, search and column of the
// record sees the text, including those of other commands; the values stay.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "commands/command_translate.h"
#include "evtx/record_fields.h"

namespace zanvik {

using translate_specs = std::map<std::string, translate_spec>;  // by slot name

// Translates the slots that have a name in `specs`, including nested ones, until as many were
// translated as there are names. Returns whether any slot got a new text.
bool translate_record_fields(record_fields& record, const translate_specs& specs);

// The same for many records: the slots to translate are found once per layout.
class slot_translator {
 public:
  // `specs` must outlive the translator.
  explicit slot_translator(const translate_specs& specs) : specs_(specs) {}

  bool translate(record_fields& record);

  struct target {
    std::size_t slot = 0;
    const translate_spec* spec = nullptr;
  };

 private:
  const translate_specs& specs_;
  std::unordered_map<std::uint64_t, std::vector<target>> targets_;  // by layout id
};

}  // namespace zanvik
