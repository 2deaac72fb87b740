#include "sigma/yaml_text.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <unordered_map>

#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

// A problem that the tree cannot hold, with its line.
struct refused {
  std::size_t line;
  const char* why;
};

// Builds the tree from the library's events. Unfinished nodes are on a stack, so that a growing
// list moves no node that is still being filled.
class tree_builder : public YAML::EventHandler {
 public:
  explicit tree_builder(std::size_t first_line) : first_line_(first_line) {}

  std::size_t line_of(const YAML::Mark& mark) const {
    return first_line_ + (mark.line < 0 ? 0 : static_cast<std::size_t>(mark.line));
  }

  std::vector<yaml_node> documents;

  void OnDocumentStart(const YAML::Mark&) override {}
  void OnDocumentEnd() override { anchors_.clear(); }

  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    finish(make(yaml_node::kind::null, mark), anchor);
  }

  void OnScalar(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                const std::string& value) override {
    yaml_node node = make(yaml_node::kind::text, mark);
    node.text = value;
    finish(std::move(node), anchor);
  }

  void OnSequenceStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value) override {
    open_.push_back({make(yaml_node::kind::list, mark), anchor, false});
  }
  void OnMapStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value) override {
    open_.push_back({make(yaml_node::kind::map, mark), anchor, false});
  }
  void OnSequenceEnd() override { close(); }
  void OnMapEnd() override { close(); }

  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const auto found = anchors_.find(anchor);
    if (found == anchors_.end()) throw refused{line_of(mark), "an alias stands within its anchor"};
    count(size_of(found->second), line_of(mark));
    finish(yaml_node(found->second), 0);
  }

 private:
  struct open_node {
    yaml_node node;
    YAML::anchor_t anchor;
    bool has_key;
  };

  static std::size_t size_of(const yaml_node& node) {
    std::size_t size = 1;
    for (const yaml_node& item : node.items) size += size_of(item);
    return size;
  }

  void count(std::size_t nodes, std::size_t line) {
    nodes_ += nodes;
    if (nodes_ > limits::yaml_nodes) throw refused{line, "too many values"};
  }

  yaml_node make(yaml_node::kind what, const YAML::Mark& mark) {
    count(1, line_of(mark));
    if (open_.size() > limits::yaml_depth) throw refused{line_of(mark), "nested too deep"};
    yaml_node node;
    node.what = what;
    node.line = line_of(mark);
    return node;
  }

  void close() {
    open_node done = std::move(open_.back());
    open_.pop_back();
    finish(std::move(done.node), done.anchor);
  }

  void finish(yaml_node node, YAML::anchor_t anchor) {
    if (anchor != 0) anchors_[anchor] = node;
    if (open_.empty()) {
      documents.push_back(std::move(node));
    } else if (open_node& parent = open_.back(); !parent.node.is_map() || parent.has_key) {
      parent.has_key = false;
      parent.node.items.push_back(std::move(node));
    } else {
      add_key(parent, node);
    }
  }

  static void add_key(open_node& parent, const yaml_node& key) {
    if (key.is_list() || key.is_map()) throw refused{key.line, "a key is no text"};
    auto& keys = parent.node.keys;
    if (keys.size() == limits::yaml_keys) throw refused{key.line, "too many keys in a map"};
    if (std::find(keys.begin(), keys.end(), key.text) != keys.end()) {
      throw refused{key.line, "a key stands twice in a map"};
    }
    keys.push_back(key.text);
    parent.has_key = true;
  }

  std::size_t first_line_;
  std::vector<open_node> open_;
  std::unordered_map<YAML::anchor_t, yaml_node> anchors_;
  std::size_t nodes_ = 0;
};

}  // namespace

const yaml_node* yaml_node::find(std::string_view key) const {
  const auto found = std::find(keys.begin(), keys.end(), key);
  return found == keys.end() ? nullptr : &items[static_cast<std::size_t>(found - keys.begin())];
}

std::string_view yaml_node::text_of(std::string_view key) const {
  const yaml_node* value = find(key);
  return value != nullptr && value->is_text() ? std::string_view(value->text) : std::string_view();
}

std::vector<yaml_piece> yaml_pieces(std::string_view text) {
  std::vector<yaml_piece> out{{text, 1}};
  std::size_t line = 1;
  bool directives = false;
  for (std::size_t begin = 0; begin < text.size(); ++line) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view row = text.substr(begin, end - begin);
    directives |= row.starts_with('%');
    const bool parts = row.starts_with("---") &&
                       (row.size() == 3 || std::isspace(static_cast<unsigned char>(row[3])) != 0);
    if (parts && begin != 0) {
      const auto where = static_cast<std::size_t>(out.back().text.data() - text.data());
      out.back().text = text.substr(where, begin - where);
      out.push_back({text.substr(begin), line});
    }
    begin = end + 1;
  }
  if (directives) return {{text, 1}};
  return out;
}

yaml_file read_yaml(const std::string& text, std::size_t first_line) {
  yaml_file out;
  tree_builder builder(first_line);
  if (text.size() > limits::rule_bytes) return {{}, "is too large for a rule", first_line};
  try {
    std::istringstream in(text);
    YAML::Parser parser(in);
    while (parser.HandleNextDocument(builder)) {
    }
  } catch (const refused& e) {
    out.error = e.why;
    out.error_line = e.line;
  } catch (const YAML::Exception& e) {
    out.error = e.msg;
    out.error_line = builder.line_of(e.mark);
  } catch (const std::exception& e) {  // what the library lets through from the standard library
    out.error = e.what();
    out.error_line = first_line;
  }
  out.documents = std::move(builder.documents);
  return out;
}

}  // namespace zanvik::sigma
