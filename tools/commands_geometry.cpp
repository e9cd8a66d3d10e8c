// Geometry records: single records, lists, groups and the writers.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <string>
#include <utility>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

// The shapes of the library's readers and writers.
template <typename T>
using ReadFunction = void (*)(const KR::KRValue&, const std::string&, T&);
template <typename T>
using GroupReadFunction = void (*)(const KR::KRValue&, const std::string&, const bool&,
                                   std::vector<std::vector<T>>&);
template <typename T>
using WriteFunction = void (*)(const T&, KR::KRValue&);

// Formatting. A record prints as "Pose2D(x=1, y=2, theta=3)", every number
// the shortest text that reads back to the same float; a transform prints
// as its three rows. The lines of a record after its first are indented by
// `indent`. With --json a record is the array of its floats in the order
// the readers take them.

void field(std::string& text, const char* name, float number) {
  text += name;
  appendNumber(text, number);
}

void describe(std::string& text, const KR::Math::Position2D& p, const std::string&) {
  field(text, "Position2D(x=", p.x);
  field(text, ", y=", p.y);
  text += ')';
}

void describe(std::string& text, const KR::Math::Pose2D& p, const std::string&) {
  field(text, "Pose2D(x=", p.x);
  field(text, ", y=", p.y);
  field(text, ", theta=", p.theta);
  text += ')';
}

void describe(std::string& text, const KR::Math::Pose2DAndTime& p, const std::string& indent) {
  text += "Pose2DAndTime(";
  describe(text, p.pose, indent);
  field(text, ", time=", p.time);
  text += ')';
}

void describe(std::string& text, const KR::Math::Position3D& p, const std::string&) {
  field(text, "Position3D(x=", p.x);
  field(text, ", y=", p.y);
  field(text, ", z=", p.z);
  text += ')';
}

void describe(std::string& text, const KR::Math::Position6D& p, const std::string&) {
  field(text, "Position6D(x=", p.x);
  field(text, ", y=", p.y);
  field(text, ", z=", p.z);
  field(text, ", wx=", p.wx);
  field(text, ", wy=", p.wy);
  field(text, ", wz=", p.wz);
  text += ')';
}

std::string formatRow(float c1, float c2, float c3, float c4) {
  return "[" + formatFloat(c1) + ", " + formatFloat(c2) + ", " + formatFloat(c3) + ", " +
         formatFloat(c4) + "]";
}

void describe(std::string& text, const KR::Math::Transform& t, const std::string& indent) {
  text += formatRow(t.r1_c1, t.r1_c2, t.r1_c3, t.r1_c4) + "\n" + indent +
          formatRow(t.r2_c1, t.r2_c2, t.r2_c3, t.r2_c4) + "\n" + indent +
          formatRow(t.r3_c1, t.r3_c2, t.r3_c3, t.r3_c4);
}

KR::KRValue toValue(const KR::Math::Position2D& p) { return KR::KRValue(std::vector<float>{p.x, p.y}); }

KR::KRValue toValue(const KR::Math::Pose2D& p) {
  return KR::KRValue(std::vector<float>{p.x, p.y, p.theta});
}

KR::KRValue toValue(const KR::Math::Pose2DAndTime& p) {
  return KR::KRValue(std::vector<float>{p.pose.x, p.pose.y, p.pose.theta, p.time});
}

KR::KRValue toValue(const KR::Math::Position3D& p) { return KR::KRValue(p.toVector()); }

KR::KRValue toValue(const KR::Math::Position6D& p) { return KR::KRValue(p.toVector()); }

KR::KRValue toValue(const KR::Math::Transform& t) {
  return KR::KRValue(std::vector<float>{t.r1_c1, t.r1_c2, t.r1_c3, t.r1_c4, t.r2_c1, t.r2_c2,
                                        t.r2_c3, t.r2_c4, t.r3_c1, t.r3_c2, t.r3_c3, t.r3_c4});
}

template <typename T>
void printJson(Output& out, const T& record) {
  printValue(out, toValue(record));
}

/// The value text of a list, printed record by record rather than built as
/// one value first: a long list costs no second tree.
template <typename T>
void printJson(Output& out, const std::vector<T>& list) {
  out << '[';
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i != 0) {
      out << ", ";
    }
    printJson(out, list[i]);
  }
  out << ']';
}

/// One record per line, "i: record", each line starting with `indent`
/// but the first.
template <typename T>
void printList(Output& out, const std::vector<T>& list, const std::string& indent) {
  std::string line;
  for (std::size_t i = 0; i < list.size(); ++i) {
    line.clear();
    if (i != 0) {
      line += '\n';
      line += indent;
    }
    const std::size_t labelStart = line.size();
    line += std::to_string(i);
    line += ": ";
    describe(line, list[i], indent + std::string(line.size() - labelStart, ' '));
    out << line;
  }
}

/// "group i:", then its records indented.
template <typename T>
void printGroups(Output& out, const std::vector<std::vector<T>>& groups) {
  for (std::size_t i = 0; i < groups.size(); ++i) {
    out << (i ? "\n" : "") << "group " << i << ":";
    if (!groups[i].empty()) {
      out << "\n  ";
      printList(out, groups[i], "  ");
    }
  }
}

// Inputs that no single library reader takes.

void checkToolArray(const KR::KRValue& value, const char* usage) {
  if (!value.isArray()) {
    throw UsageError(usage);
  }
}

void readFloats(const KR::KRValue& value, const std::string& name, std::vector<float>& out) {
  checkToolArray(value, "a float vector is given as [NUMBER, ...]");
  out.clear();
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    out.push_back(extractFloat(value[int(i)], name, "KRValue"));
  }
}

void readPosition6DFromVector(const KR::KRValue& value, const std::string& name,
                              KR::Math::Position6D& out) {
  std::vector<float> values;
  readFloats(value, name, values);
  extractPosition6DFromVector(values, name, out);
}

void readFloatLists(const KR::KRValue& value, const std::string& name,
                    std::vector<std::vector<float>>& out) {
  checkToolArray(value, "a list of float vectors is given as [[NUMBER, ...], ...]");
  out.assign(value.getSize(), {});
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    readFloats(value[int(i)], name, out[i]);
  }
}

void readPosVelAcc(const KR::KRValue& value, const std::string& name,
                   KR::Math::Pose2DPosVelAcc& out) {
  if (!value.isArray() || value.getSize() != 3) {
    throw UsageError(
        "a Pose2DPosVelAcc is given as [[px, py, ptheta], [vx, vy, vtheta], [ax, ay, atheta]]");
  }
  extractPose2DFromKRValue(value[0], name, out.position);
  extractPose2DFromKRValue(value[1], name, out.velocity);
  extractPose2DFromKRValue(value[2], name, out.acceleration);
}

void readPosVelAccs(const KR::KRValue& value, const std::string& name,
                    std::vector<KR::Math::Pose2DPosVelAcc>& out) {
  checkToolArray(value, "a list of Pose2DPosVelAcc is given as [[[px, py, ptheta], ...], ...]");
  out.assign(value.getSize(), {});
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    readPosVelAcc(value[int(i)], name, out[i]);
  }
}

// Command makers.

template <typename T>
Reader recordReader(std::string name, std::string prints, ReadFunction<T> read) {
  return {std::move(name), std::move(prints),
          [read](const KR::KRValue& v, const Options& o, Output& out) {
            T record;
            read(v, o.name, record);
            if (o.json) {
              printJson(out, record);
              return;
            }
            std::string text;
            describe(text, record, "");
            out << text;
          }};
}

template <typename T>
Reader listReader(std::string name, std::string prints, ReadFunction<std::vector<T>> read) {
  Reader reader{std::move(name), std::move(prints),
                [read](const KR::KRValue& v, const Options& o, Output& out) {
                  std::vector<T> records;
                  read(v, o.name, records);
                  if (o.json) {
                    printJson(out, records);
                  } else {
                    printList(out, records, "");
                  }
                }};
  reader.list = true;
  return reader;
}

template <typename T>
Reader groupReader(std::string name, std::string prints, GroupReadFunction<T> read) {
  Reader reader{std::move(name), std::move(prints),
                [read](const KR::KRValue& v, const Options& o, Output& out) {
                  std::vector<std::vector<T>> groups;
                  read(v, o.name, o.singleGroup, groups);
                  if (o.json) {
                    printJson(out, groups);
                  } else {
                    printGroups(out, groups);
                  }
                }};
  reader.list = true;
  return reader;
}

/// Reads the input text with `read`, writes the result with `write` and
/// prints the value written.
template <typename T>
Writer writer(std::string name, std::string usage, ReadFunction<T> read, WriteFunction<T> write) {
  return {std::move(name), std::move(usage),
          [read, write](const std::string& input, const Options& o) {
            T record{};
            read(parseInput(input), o.name, record);
            KR::KRValue out;
            write(record, out);
            return KR::printKRValue(out);
          }};
}

void addRecordReaders(Commands& c) {
  c.readers.push_back(
      recordReader("position2d", "prints the Position2D", extractPosition2DFromKRValue));
  c.readers.push_back(recordReader("pose2d", "prints the Pose2D", extractPose2DFromKRValue));
  c.readers.push_back(recordReader("pose2d-and-time",
                                   "prints the Pose2DAndTime, time -1 when absent",
                                   extractPose2DAndTimeFromKRValue));
  c.readers.push_back(
      recordReader("position3d", "prints the Position3D", extractPosition3DFromKRValue));
  c.readers.push_back(
      recordReader("position6d", "prints the Position6D", extractPosition6DFromKRValue));
  c.readers.push_back(recordReader("position6d-vector",
                                   "reads six floats as a Position6D through a float vector",
                                   readPosition6DFromVector));
  c.readers.push_back(recordReader(
      "transform",
      "prints the three rows, repairing a nearly valid matrix (noted on standard error)",
      extractTransformFromKRValue));
}

void addListReaders(Commands& c) {
  c.readers.push_back(listReader("position2ds", "prints one Position2D per line",
                                 extractVectorPosition2DFromKRValue));
  c.readers.push_back(
      listReader("pose2ds", "prints one Pose2D per line", extractVectorPose2DFromKRValue));
  c.readers.push_back(listReader("pose2d-and-times", "prints one Pose2DAndTime per line",
                                 extractVectorPose2DAndTimeFromKRValue));
  c.readers.push_back(listReader("position3ds",
                                 "prints one Position3D per line",
                                 extractVectorPosition3DFromKRValue));
  c.readers.push_back(listReader("position6ds", "prints one Position6D per line",
                                 extractVectorPosition6DFromKRValue));
  c.readers.push_back(
      listReader("transforms", "prints each as three rows", extractVectorTransformFromKRValue));
  c.readers.push_back(groupReader("position6d-groups", "prints each group (uses --single-group)",
                                  extractVectorPosition6DFromKRValue));
  c.readers.push_back(groupReader("transform-groups", "prints each group (uses --single-group)",
                                  extractVectorTransformFromKRValue));
}

void addWriters(Commands& c) {
  c.writers.push_back(writer("position2d", "[X, Y]; prints [x, y] as float values",
                             extractPosition2DFromKRValue, extractKRValueFromPosition2D));
  c.writers.push_back(writer("position2ds", "[[X, Y], ...]; prints [[x, y], ...]",
                             extractVectorPosition2DFromKRValue,
                             extractKRValueFromVectorPosition2D));
  c.writers.push_back(writer("pose2d", "[X, Y, THETA]; prints [x, y, theta]",
                             extractPose2DFromKRValue, extractKRValueFromPose2D));
  c.writers.push_back(writer("pose2d-pos-vel-acc",
                             "[[PX, PY, PTHETA], [VX, VY, VTHETA], [AX, AY, ATHETA]]; prints "
                             "the three poses",
                             readPosVelAcc, extractKRValueFromPose2DPosVelAcc));
  c.writers.push_back(writer("pose2d-pos-vel-accs",
                             "[POS-VEL-ACC, ...]; prints one element per record (an empty "
                             "list: null)",
                             readPosVelAccs, extractKRValueFromVectorPose2DPosVelAcc));
  c.writers.push_back(writer("vector-vector-float",
                             "[[NUMBER, ...], ...]; prints the lists as float values",
                             readFloatLists, createKRValueFromVectorVectorFloat));
  c.writers.push_back(writer("position3ds",
                             "[X, Y, Z] or [[X, Y, Z], ...]; prints [[x, y, z], ...] as float "
                             "values (anything else: [])",
                             extractVectorPosition3DFromKRValue,
                             createKRValueFromVectorPosition3D));
}

}  // namespace

void addGeometryCommands(Commands& c) {
  addRecordReaders(c);
  addListReaders(c);
  addWriters(c);
}

}  // namespace krvaluetool
