// Elements of the page, with every text escaped on its way.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "report/page_text.h"

namespace zanvik {

class html_writer {
 public:
  // Markup of ours.
  html_writer& markup(std::string_view markup) {
    html_ += markup;
    return *this;
  }
  // Text that has been made visible, or ours.
  html_writer& text(std::string_view text) {
    append_html(html_, text);
    return *this;
  }
  // Any bytes.
  html_writer& any_text(std::string_view text) {
    append_html(html_, visible(text));
    return *this;
  }
  html_writer& number(std::uint64_t number) { return markup(grouped(number)); }
  std::string take() { return std::move(html_); }

 private:
  std::string html_;
};

// "1 log", "2 logs"
std::string counted(std::uint64_t count, std::string_view one, std::string_view many);
// "1.5 MiB"
std::string size_text(std::uint64_t bytes);

}  // namespace zanvik
