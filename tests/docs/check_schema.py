#!/usr/bin/env python3
"""Checks docs/matgraph.schema.json: it is a valid JSON Schema, every example library
passes it, and it tells small files that load from small files that are broken.

    check_schema.py SCHEMA EXAMPLE...
"""
import json
import sys

import jsonschema

T = "6448c681-b973-4f28-bd17-0518157028ec"  # a type
C = "4a68be42-a1b2-4c3d-8e4f-5a6b7c8d9e0f"  # a node class
N = "1230e816-9771-4b31-9240-9ab76a92560e"  # a node


def versioned(*items):
    return [{"datasources": [], "fileversion": 1}, list(items)]


def typeWith(default):
    return {"content": "type", "uuid": "1eba5861-a87e-450c-8500-f19c49292934", "default": default}


# A type and a node class "a" -> "result" that the graphs below use, so that the accepted
# cases load, references included.
TYPE = {"content": "type", "uuid": T}
NODE_CLASS = {"content": "nodeclass", "uuid": C, "input": [{"name": "a", "type": T}],
              "output": [{"name": "result", "type": T}]}


def graphWith(node=None, output=None, **members):
    """A library of TYPE, NODE_CLASS and a graph with the input "in", the node N of
    NODE_CLASS (with the members `node`) and the output "out" (with the members `output`)."""
    graph = {"content": "graph", "uuid": "2debc7d4-a247-439e-b70b-cbc267dfb6b9",
             "input": [{"name": "in", "type": T}], **members}
    if node is not None:
        graph["nodes"] = [{"uuid": N, "node": C, **node}]
    if output is not None:
        graph["output"] = [{"name": "out", "type": T, **output}]
    return versioned(TYPE, NODE_CLASS, graph)


# (why, document): each loads.
ACCEPTED = [
    ("empty bare content", []),
    ("empty versioned file", versioned()),
    ("fileversion of any value", [{"fileversion": "x"}, []]),
    ("bare content with a type", [{"content": "type", "uuid": ""}]),
    ("upper-case UUID", [{"content": "type", "uuid": T.upper()}]),
    ("single element without brackets", versioned(typeWith({"component": "float", "value": 5}))),
    ("empty element array", versioned(typeWith({"component": "int", "value": []}))),
    ("bool elements as text", versioned(typeWith({"component": "bool", "value": ["true", False]}))),
    ("semantic default", versioned(typeWith({"component": "semantic", "value": [C, ""]}))),
    ("node inputs as an object", graphWith(node={"input": {"a": ["", "in"]}})),
    ("node inputs as entries", graphWith(node={
        "input": [{"name": "a", "from": ["", "in"], "default": {"component": "float", "value": 1}}]})),
    ("graph output fed by a node", graphWith(node={}, output={"from": [N, "result"]})),
    ("node at a position", graphWith(node={"editorpos": [0.5, -3]})),
]

# (why, document): each is refused by the loader, or loads but loses something.
REFUSED = [
    ("header without fileversion", [{"datasources": []}, []]),
    ("header member the loader drops", [{"fileversion": 1, "author": "x"}, []]),
    ("three elements behind a header", [{"fileversion": 1}, [], []]),
    ("content element that is no object", versioned(5)),
    ("item without uuid", versioned({"content": "type"})),
    ("item without content", versioned({"uuid": T})),
    ("kind in the wrong case", versioned({"content": "Type", "uuid": T})),
    ("misspelt member", versioned({"content": "type", "uuid": T, "defualt": {}})),
    ("uuid that is no UUID", versioned({"content": "type", "uuid": "abc"})),
    ("desc that is no string", versioned({"content": "type", "uuid": T, "desc": 5})),
    ("value without value", versioned(typeWith({"component": "float"}))),
    ("value without component", versioned(typeWith({"value": 1}))),
    ("component in the wrong case", versioned(typeWith({"component": "Float", "value": 1}))),
    ("float given as text", versioned(typeWith({"component": "float", "value": ["1"]}))),
    ("int with a fraction", versioned(typeWith({"component": "int", "value": 1.5}))),
    ("int out of range", versioned(typeWith({"component": "int", "value": 3e10}))),
    ("bool as a number", versioned(typeWith({"component": "bool", "value": 1}))),
    ("bool text other than true or false", versioned(typeWith({"component": "bool", "value": "yes"}))),
    ("semantic by name", versioned(typeWith({"component": "semantic", "value": "color"}))),
    ("node class inputs as an object",
     versioned({"content": "nodeclass", "uuid": C, "input": {"a": T}})),
    ("parameter without type",
     versioned({"content": "nodeclass", "uuid": C, "input": [{"name": "a"}]})),
    ("from on a node class output",
     versioned({"content": "nodeclass", "uuid": C,
                "output": [{"name": "r", "type": T, "from": ["", "a"]}]})),
    ("nodes not an array", graphWith(nodes={})),
    ("node without class", graphWith(nodes=[{"uuid": N}])),
    ("node without uuid", graphWith(nodes=[{"node": C}])),
    ("node element that is no object", graphWith(nodes=[N])),
    ("editorpos of three numbers", graphWith(node={"editorpos": [1, 2, 3]})),
    ("from of three elements", graphWith(node={}, output={"from": [N, "result", "x"]})),
    ("from naming a node by name", graphWith(node={}, output={"from": ["tint", "result"]})),
    ("input entry without name", graphWith(node={"input": [{"from": ["", "in"]}]})),
    ("input neither list nor object", graphWith(node={"input": "a"})),
]


def main():
    if len(sys.argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    validatorClass = jsonschema.validators.validator_for(schema)
    validatorClass.check_schema(schema)
    validator = validatorClass(schema)

    failures = []
    for path in sys.argv[2:]:
        with open(path, encoding="utf-8") as file:
            document = json.load(file)
        for error in validator.iter_errors(document):
            failures.append(f"{path}: {error.message} at {error.json_path}")
    for why, document in ACCEPTED:
        error = jsonschema.exceptions.best_match(validator.iter_errors(document))
        if error is not None:
            failures.append(f"accepted case '{why}' fails: {error.message} at {error.json_path}")
    for why, document in REFUSED:
        if validator.is_valid(document):
            failures.append(f"broken case '{why}' passes the schema")

    for failure in failures:
        print(failure)
    print(f"{len(sys.argv) - 2} examples, {len(ACCEPTED)} good and {len(REFUSED)} broken files: "
          f"{len(failures)} failure(s)")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
