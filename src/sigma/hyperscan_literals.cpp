// Many literals by Hyperscan; the only file that uses the library. A build without it
// (ZANVIK_HYPERSCAN unset) has only the plain engine.
#ifdef ZANVIK_HYPERSCAN
#include <hs/hs.h>

#include <memory>
#include <new>
#endif

#include "sigma/literal_set.h"

namespace zanvik::sigma {

#ifdef ZANVIK_HYPERSCAN

namespace {

hs_scratch_t* memory_of(const literal_scratch& scratch) {
  return static_cast<hs_scratch_t*>(scratch.engine_memory);
}

int note_literal(unsigned id, unsigned long long, unsigned long long, unsigned, void* found) {
  static_cast<std::vector<std::uint32_t>*>(found)->push_back(id);
  return 0;
}

struct database_deleter {
  void operator()(hs_database_t* database) const { hs_free_database(database); }
};

class hyperscan_literal_set : public literal_set {
 public:
  explicit hyperscan_literal_set(hs_database_t* database) : database_(database) {}

  void prepare(literal_scratch& scratch) const override {
    hs_scratch_t* memory = memory_of(scratch);
    if (hs_alloc_scratch(database_.get(), &memory) != HS_SUCCESS) throw std::bad_alloc();
    scratch.engine_memory = memory;
  }

  void find(std::string_view text, literal_scratch& scratch) const override {
    scratch.found.clear();
    // A text of a log is far smaller than 4 GiB.
    hs_scan(database_.get(), text.data(), static_cast<unsigned>(text.size()), 0, memory_of(scratch),
            note_literal, &scratch.found);
  }

 private:
  std::unique_ptr<hs_database_t, database_deleter> database_;
};

}  // namespace

literal_scratch::literal_scratch() = default;
literal_scratch::~literal_scratch() { hs_free_scratch(memory_of(*this)); }

std::unique_ptr<literal_set> make_hyperscan_literal_set(const std::vector<std::string>& literals) {
  if (hs_valid_platform() != HS_SUCCESS || literals.empty()) return nullptr;
  std::vector<const char*> texts;
  std::vector<std::size_t> sizes;
  std::vector<unsigned> numbers;
  for (const std::string& literal : literals) {
    numbers.push_back(static_cast<unsigned>(texts.size()));
    texts.push_back(literal.data());
    sizes.push_back(literal.size());
  }
  const std::vector<unsigned> flags(literals.size(), HS_FLAG_SINGLEMATCH);
  hs_database_t* database = nullptr;
  hs_compile_error_t* error = nullptr;
  const hs_error_t result = hs_compile_lit_multi(texts.data(), flags.data(), numbers.data(),
                                                 sizes.data(), static_cast<unsigned>(texts.size()),
                                                 HS_MODE_BLOCK, nullptr, &database, &error);
  hs_free_compile_error(error);
  if (result != HS_SUCCESS) return nullptr;
  return std::make_unique<hyperscan_literal_set>(database);
}

std::string literal_engine_name() {
  return hs_valid_platform() == HS_SUCCESS ? std::string("Hyperscan ") + hs_version() : "plain";
}

#else

literal_scratch::literal_scratch() = default;
literal_scratch::~literal_scratch() = default;

std::unique_ptr<literal_set> make_hyperscan_literal_set(const std::vector<std::string>&) {
  return nullptr;
}

std::string literal_engine_name() { return "plain"; }

#endif

}  // namespace zanvik::sigma
