// The readers and writers that the krvalue tool can run, by short name.
#pragma once

#include "output.h"

#include <kr/krvalue.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace krvaluetool {

/// Options given on the command line, passed to every command.
struct Options {
  std::string name = "value";   // --name: the argument name in messages
  std::string field = "value";  // --field: the field name in messages
  float min = 0.0f;             // --min, --max: a range, for the clipping readers
  float max = 1.0f;
  bool singleGroup = false;     // --single-group: the group readers' isSingleGroup
  unsigned int count = 1;       // --count: how often the bool-list reader repeats one bool
  bool skipSecond = false;      // --skip-second: the map reader's skipSecondElement
  std::string times = "[]";     // --times: value text of the control points' times
  float minTime = -3.4e38f;     // --min-time: control points earlier than this are dropped
  bool json = false;            // --json: print a reader's result as value text
};

/// Most repetitions of one bool that --count may ask for: a list the tool
/// can still hold and print, checked before anything is allocated.
constexpr unsigned int kMaxCount = 10000000;

/// A reader: turns a value into its typed result and prints that result, in
/// its own words or, with --json, as one line of value text. The whole
/// result is read before anything is printed, so a failing reader prints
/// nothing.
struct Reader {
  std::string name;
  // What is printed. What the value looks like is the title of the reader's
  // schema (summary()).
  std::string prints;
  std::function<void(const KR::KRValue& value, const Options& options, Output& out)> run;
  /// A list reader: `krvalue check` reads each element of a list on its own
  /// (as a list of one), so that it finds every bad element.
  bool list = false;
};

/// A writer: takes its input text (usually a value read back by a reader),
/// runs the library's writer and prints what it wrote.
struct Writer {
  std::string name;
  std::string usage;
  std::function<std::string(const std::string& input, const Options& options)> run;
};

struct Commands {
  std::vector<Reader> readers;
  std::vector<Writer> writers;
};

/// Every reader and writer of the tool.
const Commands& allCommands();

/// A reader's one-line summary: its layout, the title of its schema, and
/// what it prints.
std::string summary(const Reader& reader);

// Registration, one function per family of the library.
void addScalarCommands(Commands& commands);
void addGeometryCommands(Commands& commands);
void addListCommands(Commands& commands);
void addStateCommands(Commands& commands);
void addStatusCommands(Commands& commands);
void addMotionCommands(Commands& commands);

// Formatting shared by the families.

/// A float as the value text prints it: shortest exact form, with a decimal
/// point or an exponent ("3.0", "0.1", "1e+20").
std::string formatFloat(float f);

/// A float as the records print it: shortest exact form ("3", "0.1").
std::string formatNumber(float f);

/// Prints the value text of `value` (a reader's --json result).
void printValue(Output& out, const KR::KRValue& value);

/// Parses the value text of an input, failing with a usage error.
KR::KRValue parseInput(const std::string& text);

/// Thrown for input the tool cannot use (exit status 2), as opposed to the
/// library's own std::runtime_error (exit status 1).
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace krvaluetool
