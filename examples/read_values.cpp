// Reading the arguments of a request into typed records with KR::ValueUtils.
//
// Each reader checks the shape of a value and fills a record, or throws
// std::runtime_error whose message names the argument (and, for a number,
// the field). Catch it where the request is handled and pass the message on
// to whoever sent the request.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <boost/chrono/duration.hpp>

#include <iostream>
#include <stdexcept>
#include <vector>

namespace {

// Reads `value` as the target pose of a request and prints it, or prints why
// it was refused.
void readTarget(const KR::KRValue& value) {
  KR::Math::Pose2D target;
  try {
    KR::ValueUtils::extractPose2DFromKRValue(value, "target", target);
    std::cout << "target: " << target << "\n";
  } catch (const std::runtime_error& e) {
    // A pose is written field by field: after a failure, the fields before
    // the bad one are already overwritten, so do not use `target` here.
    std::cout << "refused " << value << ": " << e.what() << "\n";
  }
}

}  // namespace

int main() {
  // A request as it arrives: an array of arguments. Here it is read from its
  // text form; KR::KRValue::array(1.0f, 2.0f, 0.5f) builds a value in code.
  const KR::KRValue request =
      KR::parseKRValue("[[1.0, 2.0, 0.5], [[0, 0], [1.5, 0], [1.5, 2.0]], 2, 500000]");

  // One pose, [x, y, theta]; ints are accepted where floats are expected.
  readTarget(request[0]);

  // A list of positions, each [x, y]. One position alone, [x, y], is also
  // accepted and gives a list of one.
  std::vector<KR::Math::Position2D> waypoints;
  KR::ValueUtils::extractVectorPosition2DFromKRValue(request[1], "waypoints", waypoints);
  for (const KR::Math::Position2D& waypoint : waypoints) {
    std::cout << "waypoint: " << waypoint << "\n";
  }

  // A duration comes as two ints, whole seconds and microseconds; the reader
  // gives nanoseconds, and a double duration gives the seconds out of them.
  const boost::chrono::nanoseconds timeout =
      KR::ValueUtils::extractDuration(request[2], request[3], "timeout");
  std::cout << "timeout: " << boost::chrono::duration<double>(timeout).count() << " s\n";

  // Values that are refused, each with its exact message: a field of the
  // wrong kind, then an array too short to be a pose.
  readTarget(KR::parseKRValue("[1.0, \"north\", 0.5]"));
  readTarget(KR::parseKRValue("[1.0, 2.0]"));
  return 0;
}
