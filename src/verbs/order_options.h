// The options for the order of events, and the resources for sorting.
#pragma once

#include <string>

#include "pipeline/external_sorter.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zanvik {

struct order_options {
  std::string order;  // "log" or "time"; empty for the default
  sort_settings sorting;

  bool by_time(bool usual) const { return order.empty() ? usual : order == "time"; }
};

// Adds --memory and --temp-dir.
void add_sort_options(CLI::App& app, sort_settings& settings);
// Adds these and --order, which is returned; `what` is its help.
CLI::Option* add_order_options(CLI::App& app, order_options& options, const std::string& what);

// "64M", "512MiB", "2g", "1000000": bytes, with units of 1024. False when it is none of these.
bool read_size(std::string_view text, std::uint64_t& bytes);

}  // namespace zanvik
