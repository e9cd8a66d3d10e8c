// krvalue: runs the readers and writers of libkrvalueutils from a shell.
//
//   krvalue read READER 'VALUE' [--name NAME] [--field FIELD] [--min A --max B]
//   krvalue write WRITER 'INPUT'
//   krvalue list
//   krvalue path 'DESCRIPTION' [--start X,Y,THETA] [--name NAME] [--svg FILE]
//       [--direct] [--factory]
//   krvalue trajectory 'DESCRIPTION' [--start X,Y,THETA] [--period SECONDS]
//       [--limits V,A] [--second-limits V,A] [--fraction F] [--kind any|direct|composed]
//       [--name NAME] [--svg FILE]
//
// VALUE and DESCRIPTION are the JSON text form of a KR::KRValue ("-" reads
// it from standard input). A reader prints its typed result; a failing one
// prints the library's message and exits with status 1. Warnings go to
// standard error. Unusable input (bad text, unknown reader, a malformed
// option) exits with status 2.
#include "commands.h"
#include "paths.h"

#include <zu/log.h>

#include <CLI/CLI.hpp>

#include <iostream>
#include <iterator>
#include <stdexcept>

namespace {

using krvaluetool::Options;
using krvaluetool::PathOptions;

std::string readInput(const std::string& argument) {
  if (argument != "-") {
    return argument;
  }
  return std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
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

void printList() {
  const krvaluetool::Commands& commands = krvaluetool::allCommands();
  std::cout << "readers (krvalue read READER VALUE):\n";
  for (const auto& reader : commands.readers) {
    std::cout << "  " << reader.name << "  " << reader.usage << "\n";
  }
  std::cout << "writers (krvalue write WRITER INPUT):\n";
  for (const auto& writer : commands.writers) {
    std::cout << "  " << writer.name << "  " << writer.usage << "\n";
  }
  std::cout << "descriptions (krvalue path|trajectory DESCRIPTION, see --help):\n"
            << "  path  a path description; prints its length, end pose and samples\n"
            << "  trajectory  a trajectory description; prints its duration and states\n";
}

// Runs a command, mapping the library's failures to status 1 and unusable
// input to status 2.
template <typename Body>
int run(Body body) {
  try {
    std::cout << body() << "\n";
    return 0;
  } catch (const krvaluetool::UsageError& e) {
    std::cerr << "krvalue: " << e.what() << "\n";
    return 2;
  } catch (const std::exception& e) {
    std::cout << e.what() << "\n";
    return 1;
  }
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
}

}  // namespace

int main(int argc, char** argv) {
  zu::log::subscribe(zu::log::consoleHandler);

  CLI::App app{"Reads and writes KR::KRValue arguments with libkrvalueutils"};
  app.require_subcommand(1);

  Options options;
  std::string commandName;
  std::string input;

  CLI::App* read = app.add_subcommand("read", "run a reader on a value");
  read->add_option("READER", commandName, "reader name (see: krvalue list)")->required();
  read->add_option("VALUE", input, "value as JSON text, or - for standard input")->required();
  addOptions(read, options);

  CLI::App* write = app.add_subcommand("write", "run a writer on its input");
  write->add_option("WRITER", commandName, "writer name (see: krvalue list)")->required();
  write->add_option("INPUT", input, "input text, or - for standard input")->required();
  addOptions(write, options);

  app.add_subcommand("list", "list every reader and writer");

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
    // Help exits with 0; every malformed command line is unusable input.
    return app.exit(e) == 0 ? 0 : 2;
  }

  const krvaluetool::Commands& commands = krvaluetool::allCommands();
  if (app.got_subcommand("list")) {
    printList();
    return 0;
  }
  if (path->parsed()) {
    return run([&] {
      return krvaluetool::runPath(krvaluetool::parseInput(readInput(input)), pathOptions);
    });
  }
  if (trajectory->parsed()) {
    return run([&] {
      return krvaluetool::runTrajectory(krvaluetool::parseInput(readInput(input)), pathOptions);
    });
  }
  if (read->parsed()) {
    const krvaluetool::Reader* reader = find(commands.readers, commandName);
    if (reader == nullptr) {
      std::cerr << "krvalue: unknown reader '" << commandName << "' (see: krvalue list)\n";
      return 2;
    }
    return run([&] { return reader->run(krvaluetool::parseInput(readInput(input)), options); });
  }
  const krvaluetool::Writer* writer = find(commands.writers, commandName);
  if (writer == nullptr) {
    std::cerr << "krvalue: unknown writer '" << commandName << "' (see: krvalue list)\n";
    return 2;
  }
  return run([&] { return writer->run(readInput(input), options); });
}
