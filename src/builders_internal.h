// Wrapping of the geometry library's builders, for the path and trajectory
// readers; not installed.
#pragma once

#include <boost/function.hpp>

namespace KR {
namespace ValueUtils {
namespace detail {

/// A builder returning `Base*` that holds a copy of `inner` and, when called,
/// calls that copy with the same argument and returns its pointer as the base
/// type. An empty `inner` makes the call throw boost::bad_function_call.
template <typename Base, typename Argument, typename Derived>
boost::function<Base*(const Argument&)> upcastBuilder(
    const boost::function<Derived*(const Argument&)>& inner) {
  return [inner](const Argument& argument) -> Base* { return inner(argument); };
}

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
