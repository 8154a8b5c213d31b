#include "apps/outcome_labels.h"

#include "platform/system/text.h"

namespace QVApps {

namespace {

constexpr struct {
  const char* word;
  bool outcome;
} kWords[] = {{"1", true},        {"+1", true},       {"true", true},      {"yes", true},
              {"active", true},   {"positive", true}, {"0", false},        {"-1", false},
              {"false", false},   {"no", false},      {"inactive", false}, {"decoy", false},
              {"negative", false}};

}  // namespace

OutcomeLabels::OutcomeLabels(const std::string& positive)
    : positive_(QVSystem::QVToLower(positive)) {}

std::optional<bool> OutcomeLabels::Read(const std::string& text) const {
  const std::string label = QVSystem::QVToLower(text);
  if (!positive_.empty() && !label.empty()) return label == positive_;
  for (const auto& [word, outcome] : kWords)
    if (label == word) return outcome;
  return std::nullopt;
}

}  // namespace QVApps
