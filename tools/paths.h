// The path and trajectory commands: build a described path or trajectory at
// a start pose, print samples of it and, on request, draw it as SVG.
#pragma once

#include <kr/krvalue.h>

#include <string>

namespace krvaluetool {

/// Options of `krvalue path` and `krvalue trajectory`, as given on the
/// command line. Number lists are comma-separated ("1,-2,0.5") and read when
/// the command runs, so that a malformed one is a usage error.
struct PathOptions {
  std::string name = "value";   // --name: the argument name in messages
  std::string start = "0,0,0";  // --start: x,y,theta of the start pose
  std::string svg;              // --svg: file to draw into; empty: no picture
  // Paths only.
  bool direct = false;   // --direct: a direct path only (no "Composed")
  bool factory = false;  // --factory: feed a trajectory factory and print its calls
  // Trajectories only.
  float period = 0.01f;                  // --period: the controller's tick, seconds
  std::string limits = "0.5,0.5";        // --limits: translation V,A (m/s, m/s^2)
  std::string secondLimits = "1.0,1.0";  // --second-limits: rotation V,A (rad/s, rad/s^2)
  float fraction = 1.0f;                 // --fraction: share of the limits used, in (0, 1]
  float blend = 0.0f;                    // --blend: blend tolerance in meters (0: none)
  std::string kind = "any";              // --kind: any, direct or composed
};

/// Reads a path description, builds it at the start pose and returns its
/// length, end pose and samples along it; writes the picture when asked.
/// With `factory`, feeds the description to a trajectory factory instead and
/// prints each call it receives as it arrives (so the calls made before a
/// failing piece show above the message).
std::string runPath(const KR::KRValue& description, const PathOptions& options);

/// Reads a trajectory description, every factory with the blend tolerance,
/// builds it from rest at the start pose and returns its duration and
/// sampled states; writes the picture when asked (with the paths as
/// described beside the driven one when a blend changed them).
std::string runTrajectory(const KR::KRValue& description, const PathOptions& options);

}  // namespace krvaluetool
