// The text form of a value (kr/krvaluetext.h): JSON, with NaN, Infinity and
// -Infinity for the non-finite floats. Read a value from text, refuse bad
// text with a message that says where, and write a value back as text.
#include <kr/krvaluetext.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// Parses `text` and prints the value it holds, or the reason it holds none.
void parseAndPrint(const std::string& text) {
  try {
    const KR::KRValue value = KR::parseKRValue(text);
    std::cout << "read: " << KR::printKRValue(value) << "\n";
  } catch (const std::runtime_error& e) {
    // The message gives the line, the column and the byte offset of the
    // problem, and for a syntax error what was read just before it.
    std::cout << "refused: " << e.what() << "\n";
  }
}

}  // namespace

int main() {
  // A number without '.' or an exponent is an int, any other a float: the
  // kind is kept, so 2 and 2.0 are different values.
  const KR::KRValue value = KR::parseKRValue("[\"base\", 2, 2.0, [0.5, -1e-3], true, null]");
  std::cout << std::boolalpha << "size " << value.getSize()
            << ", element 1 is an int: " << value[1].isInt()
            << ", element 2 is a float: " << value[2].isFloat() << "\n";

  // Reading an element: the conversions check the kind and throw
  // std::runtime_error for the wrong one.
  const int count = value[1];
  const float scale = value[2];
  std::cout << "count " << count << ", scale " << scale << "\n";

  // Writing: every float as the shortest text that reads back to the same
  // float, always with a '.' or an exponent so that it stays a float.
  KR::KRValue reply = KR::KRValue::array("done", count + 1, scale / 3);
  reply.arrayPush(KR::KRValue(1e20f));
  std::cout << "reply: " << KR::printKRValue(reply) << "\n";
  // The same text through a stream.
  std::cout << "streamed: " << reply << "\n";

  // Text that is not a value: where it stops being one, line and column.
  parseAndPrint("[1, 2,\n 3,, 4]");
  parseAndPrint("{\"x\": 1}");
  parseAndPrint("[NaN, -Infinity]");
  return 0;
}
