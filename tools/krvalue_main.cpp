// krvalue: runs the readers and writers of libkrvalueutils from a shell.
//
//   krvalue read READER 'VALUE' [--name NAME] [--field FIELD] [--min A --max B] [--json]
//   krvalue read READER --lines [options]      one value per line of standard input
//   krvalue write WRITER 'INPUT' [options]     (or --lines)
//   krvalue check READER 'VALUE' [options]     every bad element of a list, one line each
//   krvalue list [--json]
//   krvalue schema READER | --all              the JSON Schema of a reader's values
//   krvalue path 'DESCRIPTION' [--start X,Y,THETA] [--name NAME] [--svg FILE]
//       [--direct] [--factory]
//   krvalue trajectory 'DESCRIPTION' [--start X,Y,THETA] [--period SECONDS]
//       [--limits V,A] [--second-limits V,A] [--fraction F] [--blend METRES]
//       [--kind any|direct|composed] [--name NAME] [--svg FILE]
//   krvalue --version
//
// VALUE and DESCRIPTION are the JSON text form of a KR::KRValue ("-" reads
// it from standard input). Results go to standard output, everything else to
// standard error: the library's message (exit status 1) followed by where in
// the value it failed ("krvalue: at [287][1]"), unusable input such
// as bad text, an unknown reader or a malformed option (status 2), a failure
// to write the output or to get memory (status 3), and warnings.
#include <fcntl.h>
#include <kr/krvalueschemas.h>
#include <kr/krvaluetext.h>
#include <kr/valueutils/locate.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zu/log.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "output.h"
#include "paths.h"

namespace {

using krvaluetool::Options;
using krvaluetool::Output;
using krvaluetool::PathOptions;

// Exit statuses.
constexpr int kLibraryError = 1;
constexpr int kUnusableInput = 2;
constexpr int kToolFailure = 3;

/// Everything on standard input, read in large blocks.
std::string readStandardInput() {
  std::string text;
  struct stat status;
  if (fstat(0, &status) == 0 && S_ISREG(status.st_mode)) {
    text.reserve(static_cast<std::size_t>(status.st_size) + 1);
  }
  char block[1 << 16];
  for (;;) {
    const ssize_t got = ::read(0, block, sizeof block);
    if (got == 0) {
      return text;
    }
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw krvaluetool::UsageError(std::string("cannot read standard input: ") +
                                    std::strerror(errno));
    }
    text.append(block, static_cast<std::size_t>(got));
  }
}

std::string readInput(const std::string& argument) {
  return argument == "-" ? readStandardInput() : argument;
}

/// A reader's failure located in the value it read.
struct LocatedFailure : std::runtime_error {
  LocatedFailure(const KR::ValueUtils::Failure& failure)
      : std::runtime_error(failure.message), path(failure.path) {}
  std::vector<unsigned int> path;
};

/// Runs `body`, which reads `value`; a library failure comes out as a
/// LocatedFailure. The tool's own usage errors pass through as they are.
void runLocated(const KR::KRValue& value, const std::function<void()>& body) {
  std::optional<krvaluetool::UsageError> usage;
  const auto failure = KR::ValueUtils::locateFailure(value, [&] {
    try {
      body();
    } catch (const krvaluetool::UsageError& e) {
      usage = e;
    }
  });
  if (usage) {
    throw *usage;
  }
  if (failure) {
    throw LocatedFailure(*failure);
  }
}

/// Where a failure is, for a person: "[287][1]", or "the whole value".
std::string describePath(const std::vector<unsigned int>& path) {
  if (path.empty()) {
    return "the whole value";
  }
  return KR::ValueUtils::Failure{"", path}.pathText();
}

template <typename Command>
const Command* find(const std::vector<Command>& commands, const std::string& name) {
  for (const Command& command : commands) {
    if (command.name == name) {
      return &command;
    }
  }
  return nullptr;
}

// The path and trajectory commands read descriptions, whose schemas are
// named after the commands.
struct Description {
  const char* name;
  const char* prints;
};
constexpr Description kDescriptions[] = {
    {"path", "prints its length, end pose and samples"},
    {"trajectory", "prints its duration and states"},
};

std::string descriptionSummary(const Description& description) {
  return krvaluetool::summary(krvaluetool::Reader{description.name, description.prints, {}});
}

void printList(Output& out) {
  const krvaluetool::Commands& commands = krvaluetool::allCommands();
  out << "readers (krvalue read READER VALUE):\n";
  for (const auto& reader : commands.readers) {
    out << "  " << reader.name << "  " << krvaluetool::summary(reader) << "\n";
  }
  out << "writers (krvalue write WRITER INPUT):\n";
  for (const auto& writer : commands.writers) {
    out << "  " << writer.name << "  " << writer.usage << "\n";
  }
  out << "descriptions (krvalue path|trajectory DESCRIPTION, see --help):\n";
  for (const Description& description : kDescriptions) {
    out << "  " << description.name << "  " << descriptionSummary(description) << "\n";
  }
}

/// The same as one JSON document, for scripts: each reader and description
/// with its summary, its layout and the file name of its schema.
void printListJson(Output& out) {
  const krvaluetool::Commands& commands = krvaluetool::allCommands();
  const auto entry = [](const std::string& name, const std::string& summary, bool withSchema) {
    nlohmann::ordered_json item{{"name", name}, {"summary", summary}};
    const KR::Schemas::ReaderSchema* schema = KR::Schemas::findReaderSchema(name);
    if (withSchema && schema != nullptr) {
      item["layout"] = schema->title;
      item["schema"] = name + ".schema.json";
    }
    return item;
  };
  nlohmann::ordered_json list{{"readers", nlohmann::ordered_json::array()},
                              {"writers", nlohmann::ordered_json::array()},
                              {"descriptions", nlohmann::ordered_json::array()}};
  for (const auto& reader : commands.readers) {
    list["readers"].push_back(entry(reader.name, krvaluetool::summary(reader), true));
  }
  for (const auto& writer : commands.writers) {
    list["writers"].push_back(entry(writer.name, writer.usage, false));
  }
  for (const Description& description : kDescriptions) {
    list["descriptions"].push_back(entry(description.name, descriptionSummary(description), true));
  }
  out << list.dump(2) << "\n";
}

/// `krvalue schema READER` and `krvalue schema --all`.
int printSchema(Output& out, const std::string& name, bool all) {
  if (all == !name.empty()) {
    std::cerr << "krvalue: give either READER or --all\n";
    return kUnusableInput;
  }
  if (all) {
    out << KR::Schemas::schemaBundle();
    return 0;
  }
  const KR::Schemas::ReaderSchema* schema = KR::Schemas::findReaderSchema(name);
  if (schema == nullptr) {
    std::cerr << "krvalue: no schema for '" << name << "' (see: krvalue list)\n";
    return kUnusableInput;
  }
  out << schema->text;
  return 0;
}

/// Writes out what is left; a failed write makes the status 3. It is
/// reported, unless the reader of the output has gone (`krvalue ... | head`):
/// then the tool ends quietly, as coreutils do, but with status 3.
/// (The path commands' factory calls go through std::cout, checked as well.)
int finish(Output& out, int status) {
  const bool written = out.flush();
  std::cout.flush();
  if (written && std::cout) {
    return status;
  }
  const int error = written ? errno : out.error();
  if (error != EPIPE) {
    std::cerr << "krvalue: cannot write the output: " << std::strerror(written ? EIO : error)
              << "\n";
  }
  return kToolFailure;
}

/// What went wrong in a command: its message and, for a located library
/// failure, where in the value.
struct Problem {
  std::string message;
  std::optional<std::vector<unsigned int>> path;
};

/// Runs a command that prints to `out`. Returns the exit status; `problem`
/// gets what went wrong.
int attempt(const std::function<void()>& body, Problem& problem) {
  std::string& message = problem.message;
  try {
    body();
    return 0;
  } catch (const LocatedFailure& e) {
    message = e.what();
    problem.path = e.path;
    return kLibraryError;
  } catch (const krvaluetool::UsageError& e) {
    message = e.what();
    return kUnusableInput;
  } catch (const std::bad_alloc&) {
    message = "out of memory";
    return kToolFailure;
  } catch (const std::exception& e) {
    message = e.what();
    return kLibraryError;
  }
}

/// Runs one command on one input and prints its result followed by a newline,
/// or its message on standard error.
int runOnce(Output& out, const std::function<void(Output&)>& body) {
  Problem problem;
  const int status = attempt([&] { body(out); }, problem);
  if (status != 0) {
    // The library's message exactly as it was thrown, then where it failed;
    // the tool's own messages name the tool.
    std::cerr << (status == kLibraryError ? "" : "krvalue: ") << problem.message << "\n";
    if (problem.path) {
      std::cerr << "krvalue: at " << describePath(*problem.path) << "\n";
    }
    return finish(out, status);
  }
  out << '\n';
  return finish(out, 0);
}

/// "\rkrvalue: N lines, M failed" on standard error about once a second,
/// when it is a terminal.
class Progress {
 public:
  Progress() : shown_(isatty(2) != 0), last_(std::chrono::steady_clock::now()) {}

  void update(std::size_t lines, std::size_t failed) {
    if (!shown_) {
      return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < std::chrono::seconds(1)) {
      return;
    }
    last_ = now;
    drawn_ = true;
    std::cerr << "\rkrvalue: " << lines << " lines, " << failed << " failed" << std::flush;
  }

  void end(std::size_t lines, std::size_t failed) {
    if (drawn_) {
      std::cerr << "\rkrvalue: " << lines << " lines, " << failed << " failed\n";
    }
  }

 private:
  bool shown_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point last_;
};

/// --lines: each line of standard input is one input; each gives one line of
/// output, its result as value text or {"error": MESSAGE, "status": N}. The
/// exit status is the highest of the lines' statuses.
int runLines(Output& out, const std::function<void(const std::string&, Output&)>& body) {
  std::ios::sync_with_stdio(false);
  Progress progress;
  std::size_t lines = 0;
  std::size_t failed = 0;
  int worst = 0;
  std::string line;
  while (std::getline(std::cin, line)) {
    Problem problem;
    const int status = attempt([&] { body(line, out); }, problem);
    if (status != 0) {
      out << "{\"error\": " << KR::printKRValue(KR::KRValue(problem.message))
          << ", \"status\": " << status;
      if (problem.path) {
        KR::KRValue path;
        path.arraySetSize(0);
        for (const unsigned int index : *problem.path) {
          path.arrayPush(KR::KRValue(static_cast<int>(index)));
        }
        out << ", \"path\": " << KR::printKRValue(path);
      }
      out << "}";
      ++failed;
      worst = std::max(worst, status);
    }
    out << '\n';
    ++lines;
    progress.update(lines, failed);
    if (out.error() != 0) {
      break;
    }
  }
  progress.end(lines, failed);
  return finish(out, worst);
}

/// One failure found by `krvalue check`.
struct Found {
  std::vector<unsigned int> path;
  std::string message;
};

/// Output that goes nowhere: /dev/null, closed again at the end.
class Discarded {
 public:
  Discarded() : fd_(::open("/dev/null", O_WRONLY | O_CLOEXEC)), out_(fd_) {}
  ~Discarded() { ::close(fd_); }
  Discarded(const Discarded&) = delete;
  Discarded& operator=(const Discarded&) = delete;
  Output& out() { return out_; }

 private:
  int fd_;
  Output out_;
};

/// The failure of `reader` on `value`, located, or nothing. What the reader
/// prints is thrown away.
std::optional<KR::ValueUtils::Failure> tryReader(const krvaluetool::Reader& reader,
                                                 const KR::KRValue& value, const Options& options,
                                                 Output& discard) {
  return KR::ValueUtils::locateFailure(value, [&] { reader.run(value, options, discard); });
}

/// Every failure of `reader` on `value`: for a list reader, each element read
/// on its own as a list of one, so that every bad element is found; the
/// reader's failure on the whole value when no element fails alone (an empty
/// list, say, or names repeated across elements).
std::vector<Found> checkAll(const krvaluetool::Reader& reader, const KR::KRValue& value,
                            const Options& options) {
  Discarded discarded;
  Output& discard = discarded.out();
  const auto whole = tryReader(reader, value, options, discard);
  if (!whole) {
    return {};
  }
  std::vector<Found> found;
  if (reader.list && value.isArray()) {
    KR::KRValue single;
    single.arraySetSize(1);
    for (unsigned int i = 0; i < value.getSize(); ++i) {
      single[0] = value[static_cast<int>(i)];
      const auto failure = tryReader(reader, single, options, discard);
      if (!failure) {
        continue;
      }
      // The path leads through the list of one: its first index becomes i.
      std::vector<unsigned int> path = failure->path;
      if (path.empty()) {
        path.push_back(i);
      } else {
        path[0] = i;
      }
      found.push_back({std::move(path), failure->message});
    }
  }
  if (found.empty()) {
    found.push_back({whole->path, whole->message});
  }
  return found;
}

/// `krvalue check`: one line per failure, "[287][1]: MESSAGE" ("whole value:
/// MESSAGE" for a failure of the value as such), then a summary. Returns the
/// exit status: 0 when nothing failed, else 1.
int runCheck(Output& out, const krvaluetool::Reader& reader, const KR::KRValue& value,
             const Options& options) {
  const std::vector<Found> found = checkAll(reader, value, options);
  for (const Found& failure : found) {
    out << (failure.path.empty() ? std::string("whole value")
                                 : KR::ValueUtils::Failure{"", failure.path}.pathText())
        << ": " << failure.message;
    if (failure.message.empty() || failure.message.back() != '\n') {
      out << '\n';
    }
  }
  if (found.empty()) {
    out << "ok: " << reader.name << " accepts the value\n";
    return 0;
  }
  out << found.size() << (found.size() == 1 ? " failure" : " failures");
  if (reader.list && value.isArray() && !found.front().path.empty()) {
    out << " in " << static_cast<std::size_t>(value.getSize()) << " elements";
  }
  out << '\n';
  return kLibraryError;
}

void addOptions(CLI::App* command, Options& options) {
  command->add_option("--name", options.name, "argument name used in messages")
      ->capture_default_str();
  command->add_option("--field", options.field, "field name used in messages")
      ->capture_default_str();
  command->add_option("--min", options.min, "lower bound of a clipping range")
      ->capture_default_str();
  command->add_option("--max", options.max, "upper bound of a clipping range")
      ->capture_default_str();
  command->add_flag("--single-group", options.singleGroup,
                    "group readers: a list of records is one group");
  command->add_option("--count", options.count, "bool-list reader: how often one bool repeats")
      ->capture_default_str();
  command->add_flag("--skip-second", options.skipSecond,
                    "map reader: entries are [key, skipped, value]");
  command->add_option("--times", options.times, "control points: their times, as value text")
      ->capture_default_str();
  command->add_option("--min-time", options.minTime,
                      "control points: points earlier than this are dropped");
  command->add_flag("--json", options.json, "print a reader's result as value text");
}

void addPathOptions(CLI::App* command, PathOptions& options) {
  command->add_option("--name", options.name, "argument name used in messages")
      ->capture_default_str();
  command->add_option("--start", options.start, "start pose X,Y,THETA (meters, radians)")
      ->capture_default_str();
  command->add_option("--svg", options.svg, "also draw it into this SVG file");
}

void addTrajectoryOptions(CLI::App* command, PathOptions& options) {
  addPathOptions(command, options);
  command->add_option("--kind", options.kind, "reader: any, direct or composed")
      ->check(CLI::IsMember({"any", "direct", "composed"}))
      ->capture_default_str();
  command
      ->add_option("--period", options.period,
                   "controller period in seconds, rounded to whole milliseconds")
      ->capture_default_str();
  command->add_option("--limits", options.limits, "translation limits V,A (m/s, m/s^2)")
      ->capture_default_str();
  command
      ->add_option("--second-limits", options.secondLimits, "rotation limits V,A (rad/s, rad/s^2)")
      ->capture_default_str();
  command->add_option("--fraction", options.fraction, "share of the limits used, in (0, 1]")
      ->capture_default_str();
  command
      ->add_option("--blend", options.blend,
                   "blend tolerance in meters: drive through joints on transitions within it")
      ->capture_default_str();
}

}  // namespace

int main(int argc, char** argv) {
  // A closed output pipe is a failed write (EPIPE), handled by finish(),
  // not a signal that kills the tool.
  std::signal(SIGPIPE, SIG_IGN);
  zu::log::subscribe(zu::log::consoleHandler);

  CLI::App app{"Reads and writes KR::KRValue arguments with libkrvalueutils"};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("krvalue ") + KR_VERSION);

  Options options;
  std::string commandName;
  std::string input;
  bool lines = false;

  CLI::App* read = app.add_subcommand("read", "run a reader on a value");
  read->add_option("READER", commandName, "reader name (see: krvalue list)")->required();
  read->add_option("VALUE", input, "value as JSON text, or - for standard input");
  read->add_flag("--lines", lines,
                 "read one value per line of standard input, print one line of value text "
                 "or {\"error\": ..., \"status\": N} per line");
  addOptions(read, options);

  CLI::App* write = app.add_subcommand("write", "run a writer on its input");
  write->add_option("WRITER", commandName, "writer name (see: krvalue list)")->required();
  write->add_option("INPUT", input, "input text, or - for standard input");
  write->add_flag("--lines", lines, "read one input per line of standard input");
  addOptions(write, options);

  CLI::App* check = app.add_subcommand(
      "check", "run a reader on a value and list every failure with where it is; a list "
               "reader reads each element on its own, so every bad element is found");
  check->add_option("READER", commandName, "reader name (see: krvalue list)")->required();
  check->add_option("VALUE", input, "value as JSON text, or - for standard input")->required();
  addOptions(check, options);

  bool listJson = false;
  app.add_subcommand("list", "list every reader and writer")
      ->add_flag("--json", listJson, "print the list as JSON, with each reader's schema");

  bool allSchemas = false;
  CLI::App* schema = app.add_subcommand(
      "schema", "print the JSON Schema of a reader's values, or of every reader's");
  schema->add_option("READER", commandName, "reader name, path or trajectory (see: krvalue list)");
  schema->add_flag("--all", allSchemas, "every schema in one document, under $defs/READER");

  PathOptions pathOptions;
  CLI::App* path = app.add_subcommand("path", "build a described path and sample it");
  path->add_option("DESCRIPTION", input, "path description as JSON text, or - for standard input")
      ->required();
  addPathOptions(path, pathOptions);
  path->add_flag("--direct", pathOptions.direct, "read a direct path only (no \"Composed\")");
  path->add_flag("--factory", pathOptions.factory,
                 "feed a trajectory factory instead and print the calls it receives");

  CLI::App* trajectory =
      app.add_subcommand("trajectory", "build a described trajectory and sample it");
  trajectory
      ->add_option("DESCRIPTION", input,
                   "trajectory description as JSON text, or - for standard input")
      ->required();
  addTrajectoryOptions(trajectory, pathOptions);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    // Help and --version exit with 0; every malformed command line is
    // unusable input.
    return app.exit(e) == 0 ? 0 : kUnusableInput;
  }

  Output out;
  const krvaluetool::Commands& commands = krvaluetool::allCommands();
  if (app.got_subcommand("list")) {
    if (listJson) {
      printListJson(out);
    } else {
      printList(out);
    }
    return finish(out, 0);
  }
  if (schema->parsed()) {
    return finish(out, printSchema(out, commandName, allSchemas));
  }
  if (path->parsed() || trajectory->parsed()) {
    return runOnce(out, [&](Output& o) {
      const KR::KRValue description = krvaluetool::parseInput(readInput(input));
      std::string result;
      runLocated(description, [&] {
        result = path->parsed() ? krvaluetool::runPath(description, pathOptions)
                                : krvaluetool::runTrajectory(description, pathOptions);
      });
      o << result;
    });
  }
  if (check->parsed()) {
    const krvaluetool::Reader* reader = find(commands.readers, commandName);
    if (reader == nullptr) {
      std::cerr << "krvalue: unknown reader '" << commandName << "' (see: krvalue list)\n";
      return kUnusableInput;
    }
    int status = 0;
    Problem problem;
    const int ran = attempt(
        [&] { status = runCheck(out, *reader, krvaluetool::parseInput(readInput(input)), options); },
        problem);
    if (ran != 0) {
      std::cerr << "krvalue: " << problem.message << "\n";
      return finish(out, ran);
    }
    return finish(out, status);
  }

  const bool reading = read->parsed();
  if (lines == (read->count("VALUE") + write->count("INPUT") != 0)) {
    std::cerr << "krvalue: give either " << (reading ? "VALUE" : "INPUT") << " or --lines\n";
    return kUnusableInput;
  }
  std::function<void(const std::string&, Output&)> body;
  if (reading) {
    const krvaluetool::Reader* reader = find(commands.readers, commandName);
    if (reader == nullptr) {
      std::cerr << "krvalue: unknown reader '" << commandName << "' (see: krvalue list)\n";
      return kUnusableInput;
    }
    if (!lines) {
      return runOnce(out, [&](Output& o) {
        // The text is dropped once parsed: only the value is needed from here.
        const KR::KRValue value = krvaluetool::parseInput(readInput(input));
        runLocated(value, [&] { reader->run(value, options, o); });
      });
    }
    // --lines prints every result as one line of value text.
    options.json = true;
    body = [reader, &options](const std::string& text, Output& o) {
      const KR::KRValue value = krvaluetool::parseInput(text);
      runLocated(value, [&] { reader->run(value, options, o); });
    };
  } else {
    const krvaluetool::Writer* writer = find(commands.writers, commandName);
    if (writer == nullptr) {
      std::cerr << "krvalue: unknown writer '" << commandName << "' (see: krvalue list)\n";
      return kUnusableInput;
    }
    body = [writer, &options](const std::string& text, Output& o) {
      o << writer->run(text, options);
    };
  }
  if (lines) {
    return runLines(out, body);
  }
  return runOnce(out, [&](Output& o) { body(readInput(input), o); });
}
