// Robot state records: rest requests, reflex modes and support sequences.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

/// Strings print quoted and escaped as the value text does.
std::string formatString(const std::string& text) { return KR::printKRValue(KR::KRValue(text)); }

std::string formatBools(const std::vector<bool>& bools) {
  std::string text = "[";
  for (std::size_t i = 0; i < bools.size(); ++i) {
    text += (i ? ", " : "") + std::string(bools[i] ? "true" : "false");
  }
  return text + "]";
}

/// "Safe (0)": the mode's name and number.
std::string formatMode(KR::REST_REFLEX_MODE mode) {
  return KR::restReflexModeToString(mode) + " (" + std::to_string(int(mode)) + ")";
}

/// The modes in key order, "\"A\" Safe (0), ...".
std::string formatModes(const std::map<std::string, KR::REST_REFLEX_MODE>& modes) {
  std::string text;
  for (const auto& entry : modes) {
    text += (text.empty() ? "" : ", ") + formatString(entry.first) + " " + formatMode(entry.second);
  }
  return text;
}

/// Three lines per request, the later ones indented under the first.
std::string formatRequests(const std::vector<KR::RestRequest>& requests) {
  std::string text;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    const KR::RestRequest& r = requests[i];
    const std::string label = std::to_string(i) + ": ";
    const std::string indent(label.size(), ' ');
    text += (i ? "\n" : "") + label + "names " + KR::printKRValue(KR::KRValue(r.names)) + "\n" +
            indent + "modes " + formatModes(r.reflexModes) + "\n" + indent + "angles " +
            KR::printKRValue(KR::KRValue(r.angles));
  }
  return text;
}

std::string formatSequence(const KR::Math::SupportSequence& s, const std::string& indent) {
  return "name " + formatString(s.name) + "\n" + indent + "values " +
         KR::printKRValue(KR::KRValue(s.values)) + "\n" + indent + "flags " + formatBools(s.flags);
}

std::string formatSequences(const std::vector<KR::Math::SupportSequence>& sequences) {
  std::string text;
  for (std::size_t i = 0; i < sequences.size(); ++i) {
    const std::string label = std::to_string(i) + ": ";
    text += (i ? "\n" : "") + label + formatSequence(sequences[i], std::string(label.size(), ' '));
  }
  return text;
}

KR::KRValue boolsValue(const std::vector<bool>& bools) {
  KR::KRValue value;
  value.arraySetSize(static_cast<int>(bools.size()));
  for (std::size_t i = 0; i < bools.size(); ++i) {
    value[static_cast<int>(i)] = static_cast<bool>(bools[i]);
  }
  return value;
}

/// [name, [values], [flags]], as the support-sequence reader takes it.
KR::KRValue sequenceValue(const KR::Math::SupportSequence& s) {
  return KR::KRValue::array(s.name, KR::KRValue(s.values), boolsValue(s.flags));
}

void readRestRequests(const KR::KRValue& value, const Options& o, Output& out) {
  std::vector<KR::RestRequest> requests;
  extractVectorRestRequestFromKRValue(value, o.name, requests);
  if (o.json) {
    KR::KRValue written;
    extractKRValueFromVectorRestRequest(requests, written);
    printValue(out, written);
    return;
  }
  out << formatRequests(requests);
}

void readReflexMode(const KR::KRValue& value, const Options& o, Output& out) {
  if (!value.isString()) {
    throw UsageError("a reflex mode is given as a string: \"Safe\", \"Immediate\" or \"Custom\"");
  }
  const KR::REST_REFLEX_MODE mode =
      KR::stringToRestReflexMode(static_cast<const std::string&>(value));
  if (o.json) {
    printValue(out, KR::KRValue(KR::restReflexModeToString(mode)));
    return;
  }
  out << formatMode(mode);
}

/// Two requests read as a list of two, then compared both ways.
void compareRestRequests(const KR::KRValue& value, const Options& o, Output& out) {
  if (!value.isArray() || value.getSize() != 2) {
    throw UsageError("two rest requests are compared as [[NAMES, SECOND], [NAMES, SECOND]]");
  }
  std::vector<KR::RestRequest> requests;
  extractVectorRestRequestFromKRValue(value, o.name, requests);
  const bool equal = requests[0] == requests[1];
  const bool equivalent = KR::restRequestsAreEquivalent(requests[0], requests[1]);
  if (o.json) {
    printValue(out, KR::KRValue::array(equal, equivalent));
    return;
  }
  out << "equal: " << (equal ? "true" : "false")
      << "\nequivalent: " << (equivalent ? "true" : "false");
}

void readSupportSequence(const KR::KRValue& value, const Options& o, Output& out) {
  KR::Math::SupportSequence sequence;
  extractSupportSequenceFromKRValue(value, o.name, sequence);
  if (o.json) {
    printValue(out, sequenceValue(sequence));
    return;
  }
  out << formatSequence(sequence, "");
}

void readSupportSequences(const KR::KRValue& value, const Options& o, Output& out) {
  std::vector<KR::Math::SupportSequence> sequences;
  extractVectorSupportSequenceFromKRValue(value, o.name, sequences);
  if (o.json) {
    KR::KRValue values;
    values.arraySetSize(0);
    for (const KR::Math::SupportSequence& sequence : sequences) {
      values.arrayPush(sequenceValue(sequence));
    }
    printValue(out, values);
    return;
  }
  out << formatSequences(sequences);
}

std::string writeRestRequests(const std::string& input, const Options& o) {
  std::vector<KR::RestRequest> requests;
  extractVectorRestRequestFromKRValue(parseInput(input), o.name, requests);
  KR::KRValue out;
  extractKRValueFromVectorRestRequest(requests, out);
  return KR::printKRValue(out);
}

// Any int is passed on, so that the library's message for a number that is no
// mode can be seen.
std::string writeReflexMode(const std::string& input, const Options&) {
  errno = 0;
  char* end = nullptr;
  const long number = std::strtol(input.c_str(), &end, 10);
  if (input.empty() || *end != '\0' || errno == ERANGE || number < INT_MIN || number > INT_MAX) {
    throw UsageError("a reflex mode is given as a whole number");
  }
  return KR::restReflexModeToString(static_cast<KR::REST_REFLEX_MODE>(number));
}

}  // namespace

void addStateCommands(Commands& c) {
  c.readers.push_back(
      {"rest-requests", "prints each request's names, modes and angles", readRestRequests});
  c.readers.back().list = true;
  c.readers.push_back({"reflex-mode", "prints the mode's name and number", readReflexMode});
  c.readers.push_back({"rest-request-comparison",
                       "prints whether they are equal and whether they are equivalent (--json: "
                       "[equal, equivalent])",
                       compareRestRequests});
  c.readers.push_back(
      {"support-sequence", "prints the name, the values and the flags", readSupportSequence});
  c.readers.push_back({"support-sequences", "prints each sequence", readSupportSequences});
  c.readers.back().list = true;

  c.writers.push_back({"rest-requests",
                       "a rest-requests value; reads it and prints what the writer makes of it",
                       writeRestRequests});
  c.writers.push_back({"reflex-mode", "INT; prints the mode's name", writeReflexMode});
}

}  // namespace krvaluetool
