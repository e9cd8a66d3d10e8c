// Support sequences: one sequence [name, floats, bools], lists of uniquely
// named sequences, their messages and what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/supportsequence.h>

#include "test_support.h"

namespace {

using KR::KRValue;
using KR::Math::SupportSequence;
using namespace KR::ValueUtils;
using Sequences = std::vector<SupportSequence>;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

const SupportSequence kLeftover("old", {9}, {true});
const std::string kSize3 = "KRMotion: arg Expected an KRValue of size 3.";
const std::string kDuplicate =
    "KRMotion: arg At least two support sequences containt the same name.";

// Every case reads into a sequence holding leftovers: success replaces all of
// it, a failure leaves it untouched.
TEST(ReadSupportSequence, ShapesMessagesAndListReaders) {
  const auto read = [](const std::string& text, SupportSequence& out) {
    extractSupportSequenceFromKRValue(parse(text), "arg", out);
  };
  KRTest::expectRows<SupportSequence>(
      read, kLeftover,
      {{R"(["S", [], []])", kNoThrow, SupportSequence("S", {}, {})},  // list readers not asked
       {R"(["S", [0.5, 1.0], [true, false]])", kNoThrow,
        SupportSequence("S", {0.5f, 1}, {true, false})},
       // One bool stands for as many flags as floats were read.
       {R"(["S", [0.5, 1, 2.0], true])", kNoThrow,
        SupportSequence("S", {0.5f, 1, 2}, {true, true, true})},
       {R"(["S", 0.5, false])", kNoThrow, SupportSequence("S", {0.5f}, {false})},
       {"null", kSize3, kLeftover},
       {R"(["S", []])", kSize3, kLeftover},
       {"[1, [], []]", "KRMotion: arg Expected a string as first element.", kLeftover},
       // Not the empty case: the float reader rejects the empty list. The
       // float and bool readers' own messages are their tests' business.
       {R"(["S", [], [true]])", "KRMotion: arg KRValue is empty.", kLeftover},
       {R"(["S", [0.5, "x"], [true, true]])", "arg KRValue: Expected a float", kLeftover},
       {R"(["S", [0.5], null])",
        "arg : Expected a bool or vector of bool but found an invalid KRValue", kLeftover}});
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
  const auto read = [](const std::string& text, Sequences& out) {
    extractVectorSupportSequenceFromKRValue(parse(text), "arg", out);
  };
  KRTest::expectRows<Sequences>(
      read, Sequences(4, kLeftover),
      {{"[]", kNoThrow, {}},
       {R"("S")", "KRMotion: arg SupportSequence KRValue is not an array", {}},
       {R"([["S", [0.5], [true]], ["T", [1], false], ["S", [0.5], [true]]])", kDuplicate,
        {s, t, s}},
       // Names are compared as each sequence is read: the duplicate is reported
       // before a bad element after it is reached ...
       {R"([["S", [0.5], [true]], ["S", [0.5], [true]], ["T"]])", kDuplicate, {s, s, none}},
       // ... and a bad element hides a duplicate after it.
       {R"([["S", [0.5], [true]], ["T"], ["S", [0.5], [true]]])", kSize3, {s, none, none}}});
}

}  // namespace
