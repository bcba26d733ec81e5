#include "store/store_error.h"

#include "app/texts.h"

namespace orvalo {
namespace {

std::string Words(const Texts& texts, StoreProblem problem, const std::string& path,
                  const std::string& particulars) {
  return texts.Format(static_cast<int>(problem), {path, particulars}).value_or(std::string());
}

const Texts& OwnTexts() {
  static const Texts texts;
  return texts;
}

}  // namespace

StoreError::StoreError(StoreProblem problem, const std::string& path,
                       const std::string& particulars)
    : std::runtime_error(Words(OwnTexts(), problem, path, particulars)),
      problem_(problem),
      path_(path),
      particulars_(particulars) {}

std::string StoreError::InWords(const Texts& texts) const {
  const std::string words = Words(texts, problem_, path_, particulars_);
  return words.empty() ? what() : words;
}

}  // namespace orvalo
