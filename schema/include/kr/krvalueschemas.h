// The wire format as JSON Schema: one schema (draft 2020-12) per reader of
// the krvalue tool, under the tool's name of the reader ("pose2ds").
//
// The schemas are the files schema/<reader>.schema.json, compiled in as
// text. Each schema's title is the reader's layout in one line and its
// description says what a schema cannot (int against float, orthonormality,
// unique names); the tool's summaries and the Python docstrings take both
// from here, so they say what the schemas say.
#pragma once

#include <cstddef>
#include <string>

namespace KR {
namespace Schemas {

/// One reader's schema.
struct ReaderSchema {
  const char* name;         // the tool's reader name: "pose2ds"
  const char* title;        // the layout, one line
  const char* description;  // what the value is, and what the schema cannot say
  const char* text;         // the schema, as JSON text
};

/// Every reader's schema, in the order of their names.
const ReaderSchema* readerSchemasBegin();
const ReaderSchema* readerSchemasEnd();

/// The schema of the reader named `name`, or nullptr.
const ReaderSchema* findReaderSchema(const std::string& name);

/// Every schema in one JSON document: a draft 2020-12 schema whose $defs
/// hold each reader's schema under the reader's name, each keeping its own
/// "$id" (urn:krvalueutils:schema:<reader>), so that a validator can be
/// given the bundle and refer to any reader's schema by that id.
std::string schemaBundle();

}  // namespace Schemas
}  // namespace KR
