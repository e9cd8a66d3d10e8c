// Rest requests: reflex-mode names, the reader's three forms of the second
// element and its messages, the writer, equality and equivalence.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>

#include "test_support.h"

#include <map>
#include <ostream>

namespace KR {
// Failure output names the fields instead of dumping bytes.
void PrintTo(const RestRequest& r, std::ostream* out) {
  *out << "{names " << printKRValue(KRValue(r.names)) << ", modes";
  for (const auto& mode : r.reflexModes) {
    *out << " " << mode.first << "=" << int(mode.second);
  }
  *out << ", angles " << printKRValue(KRValue(r.angles)) << "}";
}
}  // namespace KR

namespace {

using KR::KRValue;
using KR::RestRequest;
using namespace KR::ValueUtils;
using Requests = std::vector<RestRequest>;
using Modes = std::map<std::string, KR::REST_REFLEX_MODE>;
const KR::REST_REFLEX_MODE S = KR::SAFE, I = KR::IMMEDIATE, C = KR::CUSTOM;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

RestRequest request(std::vector<std::string> names, Modes modes, std::vector<float> angles = {}) {
  return {std::move(modes), std::move(names), std::move(angles)};
}

const Requests kLeftovers(3, request({"old"}, {{"old", I}}));

TEST(ReflexMode, NamesBothWaysAndUnknowns) {
  const std::pair<int, const char*> known[] = {{0, "Safe"}, {1, "Immediate"}, {2, "Custom"}};
  for (const auto& k : known) {
    EXPECT_EQ(KR::restReflexModeToString(static_cast<KR::REST_REFLEX_MODE>(k.first)), k.second);
    EXPECT_EQ(KR::stringToRestReflexMode(k.second), k.first);
  }
  for (const int u : {3, -1}) {
    // Converted at the call: a variable of the enumeration holding a number
    // outside its range would itself be undefined to read.
    EXPECT_EQ(messageOf([&] { KR::restReflexModeToString(static_cast<KR::REST_REFLEX_MODE>(u)); }),
              "Unknown REST_REFLEX_MODE: " + std::to_string(u));
  }
}

// Each case reads into a list holding leftovers: success replaces them, a
// failing element leaves only the requests completed before it, and a list
// that is not a non-empty array leaves the leftovers.
TEST(ReadRestRequests, FormsOfTheSecondElementAndTheirMessages) {
  const std::string noName =
      "KRValue should be a string, a vector of floats or a vector of strings.";
  const auto read = [](const std::string& text, Requests& out) {
    extractVectorRestRequestFromKRValue(parse(text), "arg", out);
  };
  KRTest::expectRows<Requests>(
      read, kLeftovers,
      {// 1. One mode name for all; "Custom" needs angles.
       {R"([[["A", "B"], "Safe"]])", kNoThrow, {request({"A", "B"}, {{"A", S}, {"B", S}})}},
       {R"([[["A", "B"], "Custom"]])", "arg unsupported mode: Custom", {}},
       // 2. Element 0 a float: angles, every name CUSTOM; lengths unchecked.
       {R"([[["A", "B"], [0.5, 1]]])",
        kNoThrow,
        {request({"A", "B"}, {{"A", C}, {"B", C}}, {0.5f, 1})}},
       {R"([[["A"], [0.5, "x"]]])", "arg KRValue: Expected a float", {}},
       // 3. Element 0 a string: modes by index, "Custom" accepted, a name
       // without a partner gets no entry, surplus modes are still converted.
       {R"([[["A", "B"], ["Safe"]]])", kNoThrow, {request({"A", "B"}, {{"A", S}})}},
       {R"([[["A"], ["Safe", "Immediate"]]])", kNoThrow, {request({"A"}, {{"A", S}})}},
       {R"([[["A"], ["Safe", "Bad"]]])", "Cannot convert Bad to REST_REFLEX_MODE.", {}},
       {R"([[["A", "A"], ["Safe", "Immediate"]]])", kNoThrow, {request({"A", "A"}, {{"A", I}})}},
       {R"([[["A", "B"], ["Safe", 1.5]]])",
        "KRValue: expected a string value but found a float value",
        {}},
       // Anything else, in the order the forms are told apart.
       {R"([[["A"], [1, 2.5]]])", noName, {}},  // an int is not a float here
       {R"([[["A"], []]])", "KRMotion: arg KRValue is empty.", {}},
       {R"([[["A"], 3]])", "arg KRValue should be a string or a vector of angles.", {}},
       // The request and its names.
       {R"([[["A"]]])", "arg KRValue size should be superior to 2.", {}},
       {R"([[["A"], "Safe", 42]])", kNoThrow, {request({"A"}, {{"A", S}})}},
       {R"([["A", "Safe"]])", "KRMotion: arg KRValue is not an array.", {}},
       {R"([[[], "Safe"]])", "KRMotion: arg KRValue is empty.", {}},
       {R"([[[1], "Safe"]])", "KRValue: expected a string value but found an int value", {}},
       {"null", "KRMotion: arg KRValue is invalid.", kLeftovers},
       // Failing later: the requests before the failing element stay.
       {R"([[["A"], "Safe"], [["B"], [0.5]], [["C"], "Custom"], [["D"], "Safe"]])",
        "arg unsupported mode: Custom",
        {request({"A"}, {{"A", S}}), request({"B"}, {{"B", C}}, {0.5f})}}});
}

TEST(RestRequestEquality, NamesInOrderModesAndAnglesWithin1e5) {
  const RestRequest base = request({"A", "B"}, {{"A", C}, {"B", C}}, {0.5f, 1});
  const struct {
    RestRequest other;
    bool equal;
  } cases[] = {
      {base, true},
      {request({"A", "B"}, {{"A", C}, {"B", C}}, {0.5f + 5e-6f, 1 - 5e-6f}), true},
      {request({"A", "B"}, {{"A", C}, {"B", C}}, {0.5f, 1 + 1e-4f}), false},
      {request({"B", "A"}, {{"A", C}, {"B", C}}, {0.5f, 1}), false},
      {request({"A", "B"}, {{"A", C}, {"B", I}}, {0.5f, 1}), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.other));
    EXPECT_EQ(base == c.other, c.equal);
    EXPECT_EQ(base != c.other, !c.equal);
  }
}

TEST(RestRequestEquivalence, NamesInAnyOrderAnglesByFirstOccurrence) {
  const Modes ab = {{"A", C}, {"B", C}};
  const RestRequest a = request({"A", "B"}, ab, {1, 2});
  const RestRequest swapped = request({"B", "A"}, ab, {2, 1});
  EXPECT_TRUE(KR::restRequestsAreEquivalent(a, swapped));
  EXPECT_NE(a, swapped);
  EXPECT_FALSE(KR::restRequestsAreEquivalent(a, request({"B", "A"}, ab, {1, 2})));
  EXPECT_FALSE(KR::restRequestsAreEquivalent(a, request({"B", "A"}, ab, {2, 1 + 1e-4f})));
  // Same modes, different multiplicities.
  EXPECT_FALSE(KR::restRequestsAreEquivalent(request({"A", "A", "B"}, ab, {1, 1, 2}),
                                             request({"A", "B", "B"}, ab, {1, 2, 2})));
  // Without angles only names and modes count.
  EXPECT_TRUE(KR::restRequestsAreEquivalent(request({"A", "B"}, {{"A", S}, {"B", I}}),
                                            request({"B", "A"}, {{"A", S}, {"B", I}})));
  // A name listed twice in b is compared with the angle of its first
  // occurrence, so the second A of b (5) is never looked at from a's side.
  const RestRequest twice = request({"A", "B", "A"}, ab, {1, 2, 5});
  EXPECT_TRUE(KR::restRequestsAreEquivalent(request({"A", "A", "B"}, ab, {1, 1, 2}), twice));
  EXPECT_FALSE(KR::restRequestsAreEquivalent(twice, request({"A", "A", "B"}, ab, {1, 1, 2})));
}

// With fewer angles than names, the angle of a name found late in b would lie
// past the end of b.angles; such requests are not equivalent, not even to
// themselves. Run under AddressSanitizer to see nothing is read out of bounds.
TEST(RestRequestEquivalence, FewerAnglesThanNamesIsNotEquivalent) {
  const RestRequest a = request({"A", "B"}, {{"A", C}, {"B", C}}, {1});
  EXPECT_FALSE(KR::restRequestsAreEquivalent(a, request({"B", "A"}, {{"A", C}, {"B", C}}, {1})));
  EXPECT_FALSE(KR::restRequestsAreEquivalent(a, a));
  EXPECT_TRUE(KR::restRequestsAreEquivalent(request({}, {}, {1}), request({}, {}, {2})));
}

std::string written(const Requests& requests) {
  KRValue value;
  extractKRValueFromVectorRestRequest(requests, value);
  return KR::printKRValue(value);
}

Requests readBack(const char* text) {
  Requests requests;
  extractVectorRestRequestFromKRValue(parse(text), "arg", requests);
  return requests;
}

TEST(WriteRestRequests, LayoutAndRoundTrips) {
  KRValue value = parse("[1, 2]");
  extractKRValueFromVectorRestRequest({}, value);
  EXPECT_FALSE(value.isValid());  // cleared, not an empty array
  EXPECT_EQ(written({RestRequest{}}), "[[[], null]]");

  // The single-string form comes back as one mode name per name.
  const Requests single = readBack(R"([[["A", "B"], "Safe"], [["C"], [0.5, 1]]])");
  const std::string text = written(single);
  EXPECT_EQ(text, R"([[["A", "B"], ["Safe", "Safe"]], [["C"], [0.5, 1.0]]])");
  EXPECT_EQ(readBack(text.c_str()), single);
  // Angles are written and modes are not, even a mode other than CUSTOM.
  EXPECT_EQ(written({request({"A"}, {{"A", S}}, {-0.25f, 2})}), R"([[["A"], [-0.25, 2.0]]])");
}

}  // namespace
