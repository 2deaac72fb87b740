#include "verbs/order_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <string_view>

namespace zanvik {

bool read_size(std::string_view text, std::uint64_t& bytes) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bytes);
  if (error != std::errc()) return false;
  std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
  unsigned shift = 0;
  constexpr std::string_view units = "kmgt";
  if (!unit.empty()) {
    const std::size_t which = units.find(static_cast<char>(unit.front() | 0x20));
    if (which != units.npos) {
      shift = 10 * (static_cast<unsigned>(which) + 1);
      unit.remove_prefix(1);
      if (unit.starts_with('i')) unit.remove_prefix(1);
    }
  }
  if (!unit.empty() && unit != "B" && unit != "b") return false;
  if (bytes > (~std::uint64_t{0} >> shift)) return false;
  bytes <<= shift;
  return true;
}

void add_sort_options(CLI::App& app, sort_settings& settings) {
  app.add_option_function<std::string>(
         "--memory",
         [&settings](const std::string& text) {
           constexpr std::uint64_t most = std::uint64_t{1} << 46;
           if (!read_size(text, settings.memory_bytes) ||
               settings.memory_bytes < least_sort_memory || settings.memory_bytes > most) {
             throw CLI::ValidationError("--memory", "cannot be: " + text + " (1M is the least)");
           }
         },
         "memory for sorting: 64M, 2G; the default is 512M")
      ->type_name("SIZE");
  app.add_option("--temp-dir", settings.folder, "folder for temporary files; the default is TMPDIR")
      ->type_name("FOLDER");
}

CLI::Option* add_order_options(CLI::App& app, order_options& options, const std::string& what) {
  CLI::Option* const order = app.add_option("--order", options.order, what)
                                 ->check(CLI::IsMember({"log", "time"}))
                                 ->type_name("ORDER");
  add_sort_options(app, options.sorting);
  return order;
}

}  // namespace zanvik
