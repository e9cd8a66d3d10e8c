// Support sequences: one sequence [name, floats, bools], lists of uniquely
// named sequences, their messages and what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/supportsequence.h>

#include "test_support.h"

#include <ostream>

namespace KR {
namespace Math {
// Failure output names the fields instead of dumping bytes.
void PrintTo(const SupportSequence& s, std::ostream* out) {
  *out << "{\"" << s.name << "\", " << printKRValue(KRValue(s.values)) << ", [";
  for (std::size_t i = 0; i < s.flags.size(); ++i) {
    *out << (i ? ", " : "") << (s.flags[i] ? "true" : "false");
  }
  *out << "]}";
}
}  // namespace Math
}  // namespace KR

namespace {

using KR::KRValue;
using KR::Math::SupportSequence;
using namespace KR::ValueUtils;
using Sequences = std::vector<SupportSequence>;

KRValue parse(const char* text) { return KR::parseKRValue(text); }

const SupportSequence kLeftover("old", {9}, {true});
const std::string kSize3 = "KRMotion: arg Expected an KRValue of size 3.";
const std::string kDuplicate =
    "KRMotion: arg At least two support sequences containt the same name.";

// Every case reads into a sequence holding leftovers: success replaces all of
// it, a failure leaves it untouched.
TEST(ReadSupportSequence, ShapesMessagesAndListReaders) {
  const struct {
    const char* text;
    SupportSequence expected;
    std::string message;
  } cases[] = {
      {R"(["S", [], []])", SupportSequence("S", {}, {}), kNoThrow},  // list readers not asked
      {R"(["S", [0.5, 1.0], [true, false]])", SupportSequence("S", {0.5f, 1}, {true, false}),
       kNoThrow},
      // One bool stands for as many flags as floats were read.
      {R"(["S", [0.5, 1, 2.0], true])", SupportSequence("S", {0.5f, 1, 2}, {true, true, true}),
       kNoThrow},
      {R"(["S", 0.5, false])", SupportSequence("S", {0.5f}, {false}), kNoThrow},
      {"null", kLeftover, kSize3},
      {R"(["S", []])", kLeftover, kSize3},
      {"[1, [], []]", kLeftover, "KRMotion: arg Expected a string as first element."},
      // Not the empty case: the float reader rejects the empty list.
      {R"(["S", [], [true]])", kLeftover, "KRMotion: arg KRValue is empty."},
      {R"(["S", null, []])", kLeftover, "KRMotion: arg KRValue is invalid."},
      {R"(["S", [0.5, "x"], [true, true]])", kLeftover, "arg KRValue: Expected a float"},
      {R"(["S", [0.5], "yes"])", kLeftover,
       "arg : Expected a bool, int, float or array but found an invalid KRValue"},
      {R"(["S", [0.5], null])", kLeftover,
       "arg : Expected a bool or vector of bool but found an invalid KRValue"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    SupportSequence out = kLeftover;
    EXPECT_EQ(messageOf([&] { extractSupportSequenceFromKRValue(parse(c.text), "arg", out); }),
              c.message);
    EXPECT_EQ(out, c.expected);
  }
}

// The bool reader accepts a list of any length; the record's constructor is
// what rejects flags and values of different lengths.
TEST(ReadSupportSequence, FlagsOfAnotherLengthFailWhenTheRecordIsBuilt) {
  for (const char* text : {R"(["S", [0.5], [true, false]])", R"(["S", [0.5], ["no"]])"}) {
    SCOPED_TRACE(text);
    SupportSequence out = kLeftover;
    const std::string message =
        messageOf([&] { extractSupportSequenceFromKRValue(parse(text), "arg", out); });
    EXPECT_NE(message, kNoThrow);
    EXPECT_EQ(message.find("KRMotion"), std::string::npos) << message;  // not a shape error
    EXPECT_EQ(out, kLeftover);
  }
}

TEST(ReadSupportSequences, UniqueNamesAndStateAfterFailure) {
  const SupportSequence s("S", {0.5f}, {true});
  const SupportSequence t("T", {1}, {false});
  const SupportSequence none;
  const struct {
    const char* text;
    Sequences expected;
    std::string message;
  } cases[] = {
      {"[]", {}, kNoThrow},
      {R"("S")", {}, "KRMotion: arg SupportSequence KRValue is not an array"},
      {R"([["S", [0.5], [true]], ["T", [1], false], ["S", [0.5], [true]]])", {s, t, s},
       kDuplicate},
      // Names are compared as each sequence is read: the duplicate is reported
      // before a bad element after it is reached ...
      {R"([["S", [0.5], [true]], ["S", [0.5], [true]], ["T"]])", {s, s, none}, kDuplicate},
      // ... and a bad element hides a duplicate after it.
      {R"([["S", [0.5], [true]], ["T"], ["S", [0.5], [true]]])", {s, none, none}, kSize3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Sequences out(4, kLeftover);
    EXPECT_EQ(
        messageOf([&] { extractVectorSupportSequenceFromKRValue(parse(c.text), "arg", out); }),
        c.message);
    EXPECT_EQ(out, c.expected);
  }
}

}  // namespace
