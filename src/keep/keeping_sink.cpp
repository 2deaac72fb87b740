#include "keep/keeping_sink.h"

#include <utility>

namespace zanvik {

keeping_sink::keeping_sink(command_refs commands, record_container& records, plan_cache& plans)
    : commands_(std::move(commands)),
      records_(records),
      plans_(plans),
      keepers_(commands_.size()),
      evt_keepers_(commands_.size()) {}

bool keeping_sink::take(std::size_t command, record_fields& record) {
  auto& keeper = keepers_[command];
  if (!keeper) keeper = std::make_unique<record_keeper>(commands_[command], records_, plans_);
  keeper->translate(record);
  return keeper->keep(record);
}

bool keeping_sink::take(std::size_t command, const evt_record& record) {
  if (!commands_[command].emit) return true;
  auto& keeper = evt_keepers_[command];
  if (!keeper) keeper = std::make_unique<evt_record_keeper>(commands_[command], records_);
  keeper->keep(record);
  return true;
}

}  // namespace zanvik
