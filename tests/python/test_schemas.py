"""Every reader against its JSON Schema, over generated values: valid ones
and near misses (wrong sizes, wrong kinds, unknown type words, deep nesting).

- A value the reader accepts is valid under its schema, for every reader.
- A value valid under the schema that the reader rejects falls under one of
  the constraints the schema cannot express, listed in the reader's case as
  its gaps. A reader without gaps is equivalent to its schema.
- Every schema is a valid draft 2020-12 schema with a title and a
  description; its examples are accepted, and each of its "x-messages"
  values fails the reader with exactly that message.
"""

import importlib
import json
import os
import pathlib
import re
import subprocess
import sys
from typing import Any, Dict, List

import jsonschema
import pytest
from hypothesis import HealthCheck, given, settings, strategies as st

import krvalueutils as kv
from schema_cases import ReaderCase, near_misses

# The family modules, imported by name: "scalars" is also a strategy of the
# package.
FAMILIES = ["scalars", "geometry", "state", "motion"]
CASES: List[ReaderCase] = [
    case for family in FAMILIES
    for case in importlib.import_module(f"schema_cases.{family}").CASES]
BY_NAME: Dict[str, ReaderCase] = {case.name: case for case in CASES}

# Generated values per reader and test; a longer campaign sets
# KRVALUEUTILS_SCHEMA_EXAMPLES (the agreement test draws that many, the
# valid-values test a fifth).
EXAMPLES = int(os.environ.get("KRVALUEUTILS_SCHEMA_EXAMPLES", "200"))

_validators: Dict[str, jsonschema.Draft202012Validator] = {}


def validator(name: str) -> jsonschema.Draft202012Validator:
    if name not in _validators:
        _validators[name] = jsonschema.Draft202012Validator(kv.schema(name))
    return _validators[name]


def accepts(case: ReaderCase, value: Any) -> bool:
    try:
        case.read(value)
    except kv.KRValueError:
        return False
    return True


def explain(case: ReaderCase, value: Any) -> str:
    errors = [e.message for e in validator(case.name).iter_errors(value)][:3]
    return f"{case.name}: {json.dumps(value)[:400]}; schema says: {errors}"


def test_every_reader_has_a_case_and_every_case_a_schema() -> None:
    assert len(BY_NAME) == len(CASES), "a reader listed twice"
    assert sorted(BY_NAME) == sorted(kv.schema_names())


def run_tool(*arguments: str) -> str:
    tool = os.environ.get("KRVALUEUTILS_TOOL")
    if not tool:
        pytest.skip("the krvalue tool is not built")
    return subprocess.run([tool, *arguments], check=True, capture_output=True, text=True).stdout


def test_the_tool_serves_the_same_schemas_and_lists_every_reader_with_its_schema() -> None:
    listed = json.loads(run_tool("list", "--json"))
    described = listed["readers"] + listed["descriptions"]
    assert sorted(entry["name"] for entry in described) == kv.schema_names()
    for entry in described:
        schema = kv.schema(entry["name"])
        assert entry["schema"] == entry["name"] + ".schema.json"
        assert entry["layout"] == schema["title"]
        assert entry["summary"].startswith(schema["title"] + "; ")
        assert json.loads(run_tool("schema", entry["name"])) == schema
    assert json.loads(run_tool("schema", "--all")) == kv.schema_bundle()


def test_the_bundle_is_a_schema_of_every_readers_schema() -> None:
    bundle = kv.schema_bundle()
    jsonschema.Draft202012Validator.check_schema(bundle)
    assert bundle["$defs"] == {name: kv.schema(name) for name in kv.schema_names()}


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_the_schema_is_well_formed_and_documented(case: ReaderCase) -> None:
    schema = kv.schema(case.name)
    jsonschema.Draft202012Validator.check_schema(schema)
    assert schema["$schema"] == "https://json-schema.org/draft/2020-12/schema"
    assert schema["$id"] == f"urn:krvalueutils:schema:{case.name}"
    assert schema["title"] and schema["description"]
    # Each constraint the schema leaves out is stated in its description and
    # listed in "x-unchecked", for the reference.
    assert schema.get("x-unchecked", []) == [gap.constraint for gap in case.gaps]
    for gap in case.gaps:
        assert gap.constraint in schema["description"], gap.constraint
    assert schema.get("examples"), "a schema shows at least one example"
    for example in schema["examples"]:
        assert accepts(case, example), example
        assert validator(case.name).is_valid(example), explain(case, example)


def test_the_wire_format_reference_is_generated_from_the_schemas() -> None:
    script = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "wire-format-reference"
    checked = subprocess.run([sys.executable, str(script), "--check"], capture_output=True, text=True)
    assert checked.returncode == 0, checked.stderr


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_the_listed_failures_fail_with_their_messages(case: ReaderCase) -> None:
    for failure in kv.schema(case.name).get("x-messages", []):
        with pytest.raises(kv.KRValueError) as raised:
            case.read(failure["value"])
        assert str(raised.value) == failure["message"]


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
@settings(max_examples=max(EXAMPLES // 5, 1), deadline=None, database=None,
          suppress_health_check=list(HealthCheck))
@given(data=st.data())
def test_valid_values_are_accepted(case: ReaderCase, data: st.DataObject) -> None:
    value = data.draw(case.valid)
    assert accepts(case, value), explain(case, value)
    assert validator(case.name).is_valid(value), explain(case, value)


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
@settings(max_examples=EXAMPLES, deadline=None, database=None,
          suppress_health_check=list(HealthCheck))
@given(data=st.data())
def test_reader_and_schema_agree(case: ReaderCase, data: st.DataObject) -> None:
    value = data.draw(st.one_of(near_misses(case.valid), case.near))
    valid = validator(case.name).is_valid(value)
    if accepts(case, value):
        assert valid, "accepted but not valid: " + explain(case, value)
    elif valid:
        assert any(gap.applies(value) for gap in case.gaps), (
            "valid but rejected, and no listed gap explains it: " + explain(case, value))
