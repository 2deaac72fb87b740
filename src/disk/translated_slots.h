// Puts readable text in the place of binary slots, as a command asks for it.
//
// In goes a decoded record that passed the command's tests; out comes the same with texts for the
// slots that the command names. Names are compared exactly, here as nowhere else, which is meant.
// A slot whose value cannot be made into text keeps it. From then on the text is what every
// look-up, search and column of the record sees, other commands' ones included; the values stay.
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

// Translates the slots that have a name in `specs`, nested ones too, until as many were translated
// as there are names. Returns whether any slot has a text that it did not have.
bool translate_record_fields(record_fields& record, const translate_specs& specs);

// The same for record after record: which slots are concerned is worked out once a layout.
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
