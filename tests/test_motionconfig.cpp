// Motion configuration pairs decoded into a list.
#include "log_capture.h"
#include "test_support.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <zu/log.h>

namespace {

using KR::KRValue;
using KR::parseKRValue;
using KR::printKRValue;
using KR::ValueUtils::decodeMotionConfig;
using KRTest::Warnings;
using Lines = std::vector<std::string>;

TEST(MotionConfig, DecodesOneValueOrSkipsItWithOneWarning) {
  const struct {
    std::string value, decoded;  // decoded "": nothing appended, one warning
  } cases[] = {{"\"1\"", "true"}, {"\"true\"", "false"}, {"2", "2"}, {"2.0", "2.0"},
               {"false", "false"},   {"[1]", ""},              {"null", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Warnings warnings;
    KRValue decoded;
    decoded.arraySetSize(0);
    decodeMotionConfig(parseKRValue(c.value), KRValue("Stiffness"), decoded);
    EXPECT_EQ(printKRValue(decoded),
              c.decoded.empty() ? "[]" : "[[\"Stiffness\", " + c.decoded + "]]");
    const Lines warned{
        "KRValueUtils warning '' decodeMotionConfig:0 Config: Stiffness invalid value."};
    EXPECT_EQ(warnings.got, c.decoded.empty() ? warned : Lines{});
  }
}

TEST(MotionConfig, AppendsInCallOrderKeepingTheNameAsGiven) {
  KRValue decoded = parseKRValue("[[\"Old\", 1]]");
  decodeMotionConfig(KRValue("1"), KRValue("A"), decoded);
  decodeMotionConfig(KRValue(3), KRValue(7), decoded);
  decodeMotionConfig(KRValue(), KRValue("Skipped"), decoded);
  decodeMotionConfig(KRValue(0.25f), parseKRValue("[1, \"x\"]"), decoded);
  EXPECT_EQ(printKRValue(decoded), "[[\"Old\", 1], [\"A\", true], [7, 3], [[1, \"x\"], 0.25]]");
  KRValue fresh;  // an invalid list starts as an empty array
  decodeMotionConfig(KRValue(false), KRValue("B"), fresh);
  EXPECT_EQ(printKRValue(fresh), "[[\"B\", false]]");
}

// A non-string name cannot be written into the warning: the value type's
// conversion failure passes through, but only while warnings are enabled.
TEST(MotionConfig, ConvertsTheNameOnlyWhenTheWarningIsWritten) {
  Warnings warnings;
  KRValue decoded;
  decoded.arraySetSize(0);
  EXPECT_NE(messageOf([&] { decodeMotionConfig(KRValue(), KRValue(5), decoded); }), kNoThrow);
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::error);
  EXPECT_EQ(messageOf([&] { decodeMotionConfig(KRValue(), KRValue(5), decoded); }), kNoThrow);
  decodeMotionConfig(parseKRValue("[1]"), KRValue("Stiffness"), decoded);
  EXPECT_EQ(printKRValue(decoded), "[]");
  EXPECT_EQ(warnings.got, Lines{});
}

}  // namespace
