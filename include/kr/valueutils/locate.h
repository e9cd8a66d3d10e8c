// Locating a failure: where inside a value a reader's check failed.
//
// The readers report a malformed value by its message alone, and keep doing
// so: same exception type, same text, same cost. A caller that wants to know
// which element was at fault runs its reads through locateFailure, which
// gives back the message together with the indices that lead from the value
// it names down to the value whose check failed.
//
//   const KR::KRValue poses = ...;   // element 287 holds a string for y
//   std::vector<KR::Math::Pose2D> out;
//   const auto failure = KR::ValueUtils::locateFailure(
//       poses, [&] { KR::ValueUtils::extractVectorPose2DFromKRValue(poses, "waypoints", out); });
//   // failure->message == "waypoints y: Expected a float"
//   // failure->pathText() == "[287][1]"
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {

/// A failed read: the reader's exact message and where it failed.
struct Failure {
  std::string message;
  /// The indices from the value given to locateFailure down to the value
  /// whose check failed: the element, for a check of one element; the array,
  /// for a check of a whole array. Empty for that value itself, and also when
  /// the failing value is not part of it (the call read something else, or
  /// failed without a reader's check, as a value's own conversion does).
  std::vector<unsigned int> path;

  /// The path as indices in brackets, "[287][1]"; "" for an empty path.
  KRVALUEUTILS_API std::string pathText() const;

  bool operator==(const Failure& other) const {
    return message == other.message && path == other.path;
  }
};

namespace detail {

/// Where a locateFailure in progress on this thread keeps the value whose
/// check failed last. Readers note it on their failure path; with no locate
/// in progress that costs one test of a thread-local pointer.
class KRVALUEUTILS_API FailureSite {
 public:
  FailureSite();
  ~FailureSite();
  FailureSite(const FailureSite&) = delete;
  FailureSite& operator=(const FailureSite&) = delete;

  /// The failure `message` of a call that read `root`, located.
  Failure locate(const KR::KRValue& root, std::string message) const;

 private:
  friend void noteFailureAt(const KR::KRValue& value) noexcept;
  const KR::KRValue* value_ = nullptr;
  FailureSite* outer_;  // the site of an enclosing locateFailure, if any
};

/// Records `value` as the one whose check failed, if a locate is in progress.
KRVALUEUTILS_API void noteFailureAt(const KR::KRValue& value) noexcept;

}  // namespace detail

/// Runs `call`, which reads `root` or a part of it with any readers. Returns
/// nothing when it succeeds. When it throws std::runtime_error (a reader's
/// failure), returns the exception's message and the path inside `root` to
/// the value whose check failed. Any other exception passes through.
///
/// Only this call records anything, and only on the thread it runs on: the
/// record lives on its stack and is gone when it returns. Calls may nest; the
/// innermost one sees the failure.
template <typename Call>
std::optional<Failure> locateFailure(const KR::KRValue& root, Call&& call) {
  const detail::FailureSite site;
  try {
    std::forward<Call>(call)();
  } catch (const std::runtime_error& e) {
    return site.locate(root, e.what());
  }
  return std::nullopt;
}

}  // namespace ValueUtils
}  // namespace KR
