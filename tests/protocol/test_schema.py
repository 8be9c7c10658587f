"""The dispatch table, protocol/quil.schema.json and docs/protocol.md name the same methods, parameters
and members."""
import os
import re
import unittest

import jsonschema

import protocol_schema
from protocol_schema import ROOT, definition, methods


def read(*path):
    with open(os.path.join(ROOT, *path), encoding="utf-8") as file:
        return file.read()


def dispatched():
    return re.findall(r'^ *\{"(\w+)", handle\w+\},', read("src", "runtime", "dispatch.cpp"), re.M)


def members(schema):
    """The names of the members of a value, and of what is in it."""
    if not schema:
        return
    if "$ref" in schema:
        yield from members(definition(schema["$ref"]))
    for name, value in schema.get("properties", {}).items():
        yield name
        yield from members(value)
    for part in schema.get("anyOf", []) + schema.get("oneOf", []) + [schema.get("items")]:
        yield from members(part)


def sections():
    """The sections of the document, by heading; those of single methods and of several."""
    parts = re.split(r"^##+ (.*)$", read("docs", "protocol.md"), flags=re.M)
    return dict(zip(parts[1::2], parts[2::2]))


class Agreement(unittest.TestCase):
    def test_methods(self):
        described = [*methods("methods"), *methods("extensions")]
        table = dispatched()
        self.assertEqual(len(table), len(set(table)))
        self.assertEqual(set(table) - set(described), set(), "dispatched, not in the schema")
        self.assertEqual(set(described) - set(table), set(),
                         "in the schema, not dispatched")
        text = "\n".join(f"{heading}\n{body}" for heading, body in sections().items())
        for name in table:
            self.assertRegex(text, rf"\b{name}\b", "not in docs/protocol.md")
        for name in set(re.findall(r'"method": "(\w+)"', text)):
            self.assertIn(name, described, "docs/protocol.md calls it")

    def test_parameters_and_members(self):
        """Each is told of in the method's own section, or with the values that several share."""
        text = read("docs", "protocol.md")
        for name in dispatched():
            method = {**methods("methods"), **methods("extensions")}[name]["properties"]
            own = [body for heading, body in sections().items() if name in heading.split(", ")]
            for place, part in (*((body, "params") for body in own), (text, "params"),
                                (text, "result")):
                for member in members(method[part]):
                    shared = member in ("x", "y")
                    self.assertRegex(text if shared else place, rf'[`"]{member}["`]',
                                     f"{part} of {name}")

    def test_what_the_tables_of_the_document_name(self):
        names = str(protocol_schema.schema()).replace("\\\\.", ".")
        for table in re.findall(r"(?:^\|.*\n)+", read("docs", "protocol.md"), re.M):
            for row in table.splitlines() if not table.startswith("| keys") else ():
                for word in re.findall(r"`(\w+)`", row.split("|")[1]):
                    self.assertTrue(word == "method" or f"'{word}'" in names, row)
        for message in re.findall(r'^\| `[A-Z_]+` \| "([^"]+)"', sections()["Errors"], re.M):
            self.assertTrue(message.rstrip() in names, message)


class Schema(unittest.TestCase):
    def test_is_one(self):
        jsonschema.Draft202012Validator.check_schema(protocol_schema.schema())
        text = str(protocol_schema.schema())
        for name in protocol_schema.schema()["$defs"]:
            self.assertTrue(name in ("Error", "UnknownMethod") or f"#/$defs/{name}'" in text, f"{name} is not used")

    def test_refuses(self):
        target = {"pid": 5}
        node = {"token": "e0", "role": "AXButton"}
        state = {"revision": "ab", "nodes": [node], "axText": "", "truncated": False}
        for method, answer in [
                ("desktop_target", {"id": 1, "result": {}}),
                ("desktop_target", {"id": 1, "result": {"target": {"pid": "5"}}}),
                ("desktop_target", {"id": 1, "result": {"target": target, "more": 1}}),
                ("desktop_target", {"id": 1, "error": {"message": "text is required"}}),
                ("desktop_type", {"id": 1, "error": {"message": "point is required"}}),
                ("desktop_click", {"id": 1, "result": {"ok": False, "target": target}}),
                ("desktop_click", {"id": 1, "result": {"ok": True, "target": target},
                                   "error": {"message": "point is required"}}),
                ("desktop_click", {"id": 1, "error": {
                    "code": "COMPUTER_CONTROL_STALE_SNAPSHOT", "message": "no frontmost application"}}),
                ("desktop_ax_get_state", {"id": 1, "result": {**state, "nodes": [{**node, "name": ""}]}}),
                ("desktop_ax_get_state", {"id": 1, "result": {**state, "nodes": [{**node, "depth": 1}]}}),
                ("desktop_ax_get_state", {"id": 1, "result": {**state, "revision": "0ab"}}),
                ("no_such_method", {"id": 1, "result": {}})]:
            with self.subTest(answer), self.assertRaises(jsonschema.ValidationError):
                protocol_schema.check(method, answer)
        protocol_schema.check("desktop_ax_get_state", {"id": 1, "result": state})
        protocol_schema.check("no_such_method", {
            "id": 1, "error": {"message": "unknown method: no_such_method"}})


if __name__ == "__main__":
    unittest.main()
