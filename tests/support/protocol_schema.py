"""protocol/quil.schema.json: what every answer is held against."""
import functools
import json
import os

import jsonschema

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


@functools.lru_cache(maxsize=None)
def schema():
    with open(os.path.join(ROOT, "protocol", "quil.schema.json"), encoding="utf-8") as file:
        return json.load(file)


def methods(block):
    """The schema of each method of "methods" or "extensions", by name."""
    entries = schema()["properties"][block]["properties"]
    return {name: definition(entry["$ref"]) for name, entry in entries.items()}


def definition(reference):
    return schema()["$defs"][reference.rpartition("/")[2]]


@functools.lru_cache(maxsize=None)
def _validator(method, part):
    known = {**methods("methods"), **methods("extensions")}
    found = known[method]["properties"][part] if method in known else False
    if part == "error":
        found = {"anyOf": [found, {"$ref": "#/$defs/UnknownMethod"}]}
    whole = {"$defs": schema()["$defs"], "type": "object", "properties": {part: found},
             "required": ["id", part], "additionalProperties": {"type": "integer"},
             "maxProperties": 2}
    return jsonschema.Draft202012Validator(whole)


@functools.lru_cache(maxsize=None)
def _node_validator():
    return jsonschema.Draft202012Validator({"$defs": schema()["$defs"], "$ref": "#/$defs/Node"})


@functools.lru_cache(maxsize=20_000)
def _check_node(text):
    _node_validator().validate(json.loads(text))


def check(method, answer):
    """Raises a ValidationError unless this is an answer that the method can give."""
    if "error" in answer:
        _validator(method, "error").validate(answer)
        return
    result = answer["result"]
    nodes = result.get("nodes") if method == "desktop_ax_get_state" else None
    if nodes:  # the same ones come again and again
        for node in nodes:
            _check_node(json.dumps(node))
        answer = {**answer, "result": {**result, "nodes": []}}
    _validator(method, "result").validate(answer)
