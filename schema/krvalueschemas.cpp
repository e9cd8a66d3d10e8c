#include <kr/krvalueschemas.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace KR {
namespace Schemas {
namespace {

// kSchemas and kSchemaCount: generated from the schema files at configure time.
#include "krvalueschemas_table.inc"

}  // namespace

const ReaderSchema* readerSchemasBegin() { return kSchemas; }

const ReaderSchema* readerSchemasEnd() { return kSchemas + kSchemaCount; }

const ReaderSchema* findReaderSchema(const std::string& name) {
  const ReaderSchema* found = std::lower_bound(
      readerSchemasBegin(), readerSchemasEnd(), name,
      [](const ReaderSchema& schema, const std::string& key) { return schema.name < key; });
  if (found == readerSchemasEnd() || found->name != name) {
    return nullptr;
  }
  return found;
}

std::string schemaBundle() {
  std::string bundle =
      "{\n"
      "  \"$schema\": \"https://json-schema.org/draft/2020-12/schema\",\n"
      "  \"$id\": \"urn:krvalueutils:schema\",\n"
      "  \"title\": \"The values of every krvalueutils reader\",\n"
      "  \"description\": \"Each reader's schema, under $defs/<reader>, keeps its own $id, "
      "urn:krvalueutils:schema:<reader>; refer to it by that id.\",\n"
      "  \"$defs\": {";
  for (const ReaderSchema* schema = readerSchemasBegin(); schema != readerSchemasEnd(); ++schema) {
    bundle += schema == readerSchemasBegin() ? "\n" : ",\n";
    bundle += "    \"";
    bundle += schema->name;
    bundle += "\": ";
    // The schema's own lines, indented to sit in $defs.
    for (const char* c = schema->text; *c != '\0'; ++c) {
      bundle += *c;
      if (*c == '\n' && c[1] != '\0') {
        bundle += "    ";
      }
    }
    while (!bundle.empty() && bundle.back() == '\n') {
      bundle.pop_back();
    }
  }
  bundle += "\n  }\n}\n";
  return bundle;
}

}  // namespace Schemas
}  // namespace KR
