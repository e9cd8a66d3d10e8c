#include <kr/valueutils/locate.h>

#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {

namespace {

// The site of the innermost locateFailure in progress on this thread.
thread_local detail::FailureSite* activeSite = nullptr;

// The indices that lead from `root` to the value at `target`, found by a
// walk of the tree without recursion; false when `target` is not in it.
bool pathTo(const KR::KRValue& root, const KR::KRValue* target, std::vector<unsigned int>& path) {
  if (&root == target) {
    return true;
  }
  // The arrays being walked, outermost first, and the next index in each.
  std::vector<std::pair<const KR::KRValue*, unsigned int>> open;
  if (root.isArray()) {
    open.emplace_back(&root, 0);
  }
  while (!open.empty()) {
    auto& [array, next] = open.back();
    if (next == array->getSize()) {
      open.pop_back();
      continue;
    }
    const KR::KRValue& element = (*array)[static_cast<int>(next)];
    ++next;
    if (&element == target) {
      for (const auto& [outer, following] : open) {
        path.push_back(following - 1);
      }
      return true;
    }
    if (element.isArray() && element.getSize() != 0) {
      open.emplace_back(&element, 0);
    }
  }
  return false;
}

}  // namespace

std::string Failure::pathText() const {
  std::string text;
  for (const unsigned int index : path) {
    text += '[';
    text += std::to_string(index);
    text += ']';
  }
  return text;
}

namespace detail {

FailureSite::FailureSite() : outer_(activeSite) { activeSite = this; }

FailureSite::~FailureSite() { activeSite = outer_; }

Failure FailureSite::locate(const KR::KRValue& root, std::string message) const {
  Failure failure{std::move(message), {}};
  if (value_ != nullptr && !pathTo(root, value_, failure.path)) {
    failure.path.clear();
  }
  return failure;
}

void noteFailureAt(const KR::KRValue& value) noexcept {
  if (FailureSite* site = activeSite) {
    site->value_ = &value;
  }
}

}  // namespace detail

}  // namespace ValueUtils
}  // namespace KR
