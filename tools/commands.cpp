#include "commands.h"

#include <kr/krvalueschemas.h>
#include <kr/krvaluetext.h>

#include <stdexcept>

namespace krvaluetool {

const Commands& allCommands() {
  static const Commands commands = [] {
    Commands c;
    addScalarCommands(c);
    addGeometryCommands(c);
    addListCommands(c);
    addStateCommands(c);
    addStatusCommands(c);
    addMotionCommands(c);
    return c;
  }();
  return commands;
}

std::string summary(const Reader& reader) {
  const KR::Schemas::ReaderSchema* schema = KR::Schemas::findReaderSchema(reader.name);
  return std::string(schema != nullptr ? schema->title : "VALUE") + "; " + reader.prints;
}

std::string formatFloat(float f) { return KR::printKRValue(KR::KRValue(f)); }

std::string formatNumber(float f) {
  std::string text;
  appendNumber(text, f);
  return text;
}

void printValue(Output& out, const KR::KRValue& value) { out << KR::printKRValue(value); }

KR::KRValue parseInput(const std::string& text) {
  try {
    return KR::parseKRValue(text);
  } catch (const std::runtime_error& e) {
    throw UsageError(e.what());
  }
}

}  // namespace krvaluetool
