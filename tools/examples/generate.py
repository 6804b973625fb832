#!/usr/bin/env python3
"""Writes the example libraries examples/base.matlib and examples/materials.matlib.

base.matlib is the base library of a small material toolkit: types, semantics and node
classes. materials.matlib is a library of material graphs loaded under it: Wood nests
GrainPattern, which uses RingNoise twice, which is built of base node classes.

This script writes plain JSON; the canonicalize tool then loads each file under its
parent and saves it, so that what lands in examples/ is exactly what saveGraphLibrary
writes. Every identifier is fixed below, so running it again gives the same files:

    python3 tools/examples/generate.py [path/to/matgraph_canonicalize]

The tool defaults to the one of the default preset, build/default/tools/canonicalize/.
"""

import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Made once with uuid.uuid4() and kept, so that the files stay the same from run to run.
UUIDS = {
    "type:float": "6448c681-b973-4f28-bd17-0518157028ec",
    "type:int": "1eba5861-a87e-450c-8500-f19c49292934",
    "type:bool": "fd40be11-9c4b-42e3-a7a6-6dc9b1c8be4e",
    "type:string": "1ba59a87-374f-4e5d-993b-fbe5c2f36413",
    "type:vector2": "610cb9f3-bcb1-4e83-be2d-1c271a8c1c43",
    "type:vector3": "7ef90f66-e903-4700-81f1-ee6427890df3",
    "type:color3": "824ba76c-18d9-4205-ab13-6e615de8479f",
    "type:int2": "2488d5a2-43cf-43e6-b431-03fbd076ca8c",
    "type:texture": "a40467dc-27a6-4c51-a1cc-e729f25da681",
    "type:surface": "4e300358-8442-4f65-97b3-7e3af19b2485",
    "type:usage": "1634ae5a-591b-43de-8bf5-b724126e45dd",
    "semantic:color": "c0eadaca-4392-4e2a-961c-38b187ef8f64",
    "semantic:normal": "57ba7446-b7f7-4d76-9d29-5ce72bde41b5",
    "semantic:emission": "beb2abf9-c685-4487-8e91-f0b2ad324b0c",
    "semantic:tangent": "81a6b1d8-f32d-4a5c-93b6-332e879b8904",
    "semantic:position": "b7c967db-499e-41f7-90fd-f86523b3ec92",
    "semantic:uv": "1d973ad4-3bb1-4d85-82b2-677426402477",
    "semantic:roughness": "2614ff41-974a-4535-87d9-090dcda6a753",
    "semantic:metalness": "8815e8ce-4e2b-40b6-ad37-81c853b414e6",
    "semantic:opacity": "fabd8ec4-48a3-4dae-8e5b-85225e2b2ba4",
    "semantic:ior": "c5f6c157-21e4-4bd5-94e3-172deddb1453",
    "semantic:height": "c7016ae7-df79-41eb-93bd-b322b7dec305",
    "semantic:mask": "77a36762-716a-4316-a36c-8630abeb8bab",
    "class:Add": "4a68be42-cd35-4bfa-96b3-e9f1992b08eb",
    "class:Subtract": "ecc820f1-8771-43c5-89d5-269002257b5a",
    "class:Multiply": "91cdd5ac-9458-490e-bcd4-66580c920e70",
    "class:Power": "9547c238-8952-4b9e-88f1-577a9aa607fc",
    "class:Fract": "da65f17d-9c4f-4f97-94e8-494146173ec6",
    "class:Sine": "bd3e11c1-4669-4411-b8f9-e6fcefdce674",
    "class:Clamp": "eadaa847-b86c-4a53-b7f3-4244694536d2",
    "class:SmoothStep": "9d985d19-69f0-4798-995b-fff8ebdb35a8",
    "class:MixColor": "344ef073-21ea-472f-8eb6-281bf44638e7",
    "class:ScaleColor": "1ae5c8ed-ec0f-4c44-8693-dce50ddfa43a",
    "class:Noise": "64a3a0b6-fa7e-4da8-8de2-81c9c6230a9f",
    "class:ImageTexture": "453c6466-1dbf-41d2-b8f3-e71a1ef14437",
    "class:TexCoord": "95640104-fbfd-4eb4-9083-1637119f9865",
    "class:Position": "8406efa0-fb6c-4697-a56b-9dbfe4545b88",
    "class:Normal": "51ff4035-909e-440b-9e2e-73bc4f08e776",
    "class:Fresnel": "d284f3a5-5952-483c-89dc-eebef798777e",
    "class:Normalize": "8768b51b-b07a-4844-b3ad-1f3cdfa49aa8",
    "class:ScaleVector3": "ee91d024-c24d-4a17-a916-e19ad0e12807",
    "class:Dot": "648f05b5-cd63-43ad-bf51-8840ce45929e",
    "class:Length": "2f8e1862-ebf5-4cff-880f-f944f3750341",
    "class:SplitVector3": "2a5a258e-42ba-45d8-87b4-ed1957a4fcaf",
    "class:CombineVector3": "b2e88b12-2c3c-404d-968e-c6ab0e672368",
    "class:NormalMap": "332243d7-4e4d-4fce-a2df-76a6a59a66a9",
    "class:PrincipledSurface": "b84c5fb2-36c0-4fed-8d2f-921691d5e32e",
    "graph:GrainPattern": "5c365fd8-a8e4-4764-b20a-35b3775e2b9e",
    "graph:Wood": "2debc7d4-a247-439e-b70b-cbc267dfb6b9",
    "graph:RingNoise": "2b310d52-6d5d-465a-90ef-8111fdd172cc",
    "graph:Plastic": "b4b8cc4d-0d23-4150-805a-c836673c43d3",
    "node:Wood/position": "1230e816-9771-4b31-9240-9ab76a92560e",
    "node:Wood/normal": "b2593d07-d2db-49cc-b191-d5e9aacf634a",
    "node:Wood/pattern": "a5f8a048-2fd0-42b3-83a4-4b8d4a1aecb3",
    "node:Wood/tint": "a9c1304c-d2ef-413a-968c-cec4f78dbfb2",
    "node:Wood/shader": "bcf355ca-59da-4bc8-bc07-9426083b1302",
    "node:GrainPattern/stretch": "04d3d4c3-e06e-4394-9aa5-079c1a8bbd74",
    "node:GrainPattern/coarse": "252c6f8a-733a-4d53-82ca-c3f2ee031ceb",
    "node:GrainPattern/fineFrequency": "ee85ac0b-caf4-460b-a019-bccfd387054d",
    "node:GrainPattern/fine": "7c70f59a-a57e-4684-9db0-1410aada0dbd",
    "node:GrainPattern/fineWeight": "7c195359-4ee9-42d3-943d-0c2ebe729221",
    "node:GrainPattern/blend": "bf58d1ab-2da7-47b2-b796-1b46f3edd3be",
    "node:GrainPattern/sharpen": "f855e459-1d16-4d53-ad1a-fcfba75a19e4",
    "node:RingNoise/split": "a3d40772-d168-430f-a482-3a9dcf9f956d",
    "node:RingNoise/radial": "3384d476-980c-4e26-b4ec-bb9766cb46d2",
    "node:RingNoise/radius": "7318e163-82a3-4a9d-a6d5-f529e5f92fd9",
    "node:RingNoise/noise": "47677b7a-2f7b-4333-ad2f-6f7b165c5b2c",
    "node:RingNoise/wobble": "c6a36147-a586-4113-a308-02591d01614b",
    "node:RingNoise/distorted": "f7da8bfd-1a24-4fdd-bb8c-367275951a5b",
    "node:RingNoise/scaled": "ea24b835-0893-4555-a2a4-920a954ff626",
    "node:RingNoise/rings": "d0d3be6d-b39d-4d0c-8d5a-f72dc75c5dbe",
    "node:Plastic/uv": "e49f9ec1-966f-4e0c-92c4-77b6df71f8cb",
    "node:Plastic/albedo": "047490f7-44ed-40d2-a9c7-9d0c9f05af0f",
    "node:Plastic/bumps": "f2474f51-ef9c-424d-b005-86d0358311d9",
    "node:Plastic/normalMap": "3dc4a6fe-33c2-4364-a58b-545c1b40cd6b",
    "node:Plastic/fresnel": "431fc7ae-2be5-4cb1-b7f5-b5737f40bcf7",
    "node:Plastic/shader": "167f8131-991f-47c8-a3fc-59fbd77dc815",
    "image:missing": "d872573d-73c1-488c-8813-6a226a45414e",
    "image:plastic-albedo": "ce8230b4-21b6-4676-8cd8-1ed3afbad4f4",
    "image:plastic-normal": "243e7858-db1f-4f57-a370-3307450bdfbc",
}


def uid(key):
    return UUIDS[key]


# Values, in the file form {"component": ..., "value": ...}; one element stands alone.
def value(component, elements):
    return {"component": component, "value": elements[0] if len(elements) == 1 else elements}


def floats(*elements):
    return value("float", list(elements))


def ints(*elements):
    return value("int", list(elements))


def flag(element):
    return value("bool", [element])


def text(element):
    return value("string", [element])


def identifier(key):
    return value("uuid", [uid(key)])


def semantic(name):
    return value("semantic", [uid("semantic:" + name)])


def header():
    return {"datasources": [], "fileversion": 1}


# --- base.matlib -------------------------------------------------------------------------

TYPES = [  # name, default
    ("float", floats(0)),
    ("int", ints(0)),
    ("bool", flag(False)),
    ("string", text("")),
    ("vector2", floats(0, 0)),
    ("vector3", floats(0, 0, 0)),
    ("color3", floats(0.5, 0.5, 0.5)),
    ("int2", ints(0, 0)),
    ("texture", identifier("image:missing")),
    ("surface", None),
    ("usage", None),  # a semantic that says what a texture holds
]

SEMANTICS = [  # name, type
    ("color", "color3"),
    ("emission", "color3"),
    ("normal", "vector3"),
    ("tangent", "vector3"),
    ("position", "vector3"),
    ("uv", "vector2"),
    ("roughness", "float"),
    ("metalness", "float"),
    ("opacity", "float"),
    ("ior", "float"),
    ("height", "float"),
    ("mask", "float"),
]


def port(name, type_name, default=None):
    return (name, type_name, default)


def binary(name, default):
    return (name, [port("a", "float", floats(default)), port("b", "float", floats(default))],
            [port("result", "float")])


def unary(name):
    return (name, [port("value", "float", floats(0))], [port("result", "float")])


NODE_CLASSES = [  # name, inputs, outputs
    binary("Add", 0),
    binary("Subtract", 0),
    binary("Multiply", 1),
    ("Power", [port("value", "float", floats(0)), port("exponent", "float", floats(1))],
     [port("result", "float")]),
    unary("Fract"),
    unary("Sine"),
    ("Clamp", [port("value", "float", floats(0)), port("min", "float", floats(0)),
               port("max", "float", floats(1))], [port("result", "float")]),
    ("SmoothStep", [port("edge0", "float", floats(0)), port("edge1", "float", floats(1)),
                    port("value", "float", floats(0))], [port("result", "float")]),
    ("MixColor", [port("a", "color3", floats(0, 0, 0)), port("b", "color3", floats(1, 1, 1)),
                  port("factor", "float", floats(0.5))], [port("result", "color3")]),
    ("ScaleColor", [port("color", "color3"), port("scale", "float", floats(1))],
     [port("result", "color3")]),
    ("Noise", [port("position", "vector3"), port("scale", "float", floats(1)),
               port("octaves", "int", ints(4)), port("roughness", "float", floats(0.5)),
               port("basis", "string", text("perlin"))], [port("value", "float")]),
    ("ImageTexture", [port("image", "texture"), port("uv", "vector2"),
                      port("tiles", "int2", ints(1, 1)), port("srgb", "bool", flag(True)),
                      port("usage", "usage", semantic("color"))],
     [port("color", "color3"), port("alpha", "float")]),
    ("TexCoord", [], [port("uv", "vector2")]),
    ("Position", [], [port("position", "vector3")]),
    ("Normal", [], [port("normal", "vector3")]),
    ("Fresnel", [port("normal", "vector3"), port("ior", "float", floats(1.5))],
     [port("factor", "float")]),
    ("Normalize", [port("vector", "vector3")], [port("result", "vector3")]),
    ("ScaleVector3", [port("vector", "vector3"), port("scale", "vector3", floats(1, 1, 1))],
     [port("result", "vector3")]),
    ("Dot", [port("a", "vector3"), port("b", "vector3")], [port("result", "float")]),
    ("Length", [port("vector", "vector3")], [port("result", "float")]),
    ("SplitVector3", [port("vector", "vector3")],
     [port("x", "float"), port("y", "float"), port("z", "float")]),
    ("CombineVector3", [port("x", "float", floats(0)), port("y", "float", floats(0)),
                        port("z", "float", floats(0))], [port("vector", "vector3")]),
    ("NormalMap", [port("color", "color3"), port("strength", "float", floats(1))],
     [port("normal", "vector3")]),
    ("PrincipledSurface", [port("baseColor", "color3", floats(0.75, 0.75, 0.75)),
                           port("metallic", "float", floats(0)),
                           port("roughness", "float", floats(0.5)),
                           port("normal", "vector3"),
                           port("opacity", "float", floats(1)),
                           port("ior", "float", floats(1.5)),
                           port("emission", "color3", floats(0, 0, 0))],
     [port("surface", "surface")]),
]


def entry(name, type_name, default=None):
    result = {"name": name, "type": uid("type:" + type_name)}
    if default is not None:
        result["default"] = default
    return result


def base_library():
    content = []
    for name, default in TYPES:
        item = {"content": "type", "uuid": uid("type:" + name), "desc": name}
        if default is not None:
            item["default"] = default
        content.append(item)
    for name, type_name in SEMANTICS:
        content.append({"content": "semantic", "uuid": uid("semantic:" + name), "desc": name,
                        "type": uid("type:" + type_name)})
    for name, inputs, outputs in NODE_CLASSES:
        item = {"content": "nodeclass", "uuid": uid("class:" + name), "desc": name}
        if inputs:
            item["input"] = [entry(*p) for p in inputs]
        item["output"] = [entry(*p) for p in outputs]
        content.append(item)
    return [header(), content]


# --- materials.matlib --------------------------------------------------------------------

GRAPH_INPUT = ""  # the source node of a connection from the graph's own input node


def node(name, class_key, at, /, **inputs):
    """A node named `name` of `class_key` ("class:Add" or "graph:RingNoise"), drawn at `at`.

    Each keyword is an input: a (source node, output) pair connects it, a value sets its
    default.
    """
    return (name, class_key, at, inputs)


GRAPHS = [
    {
        "name": "Wood",
        "inputs": [port("lightColor", "color3", floats(0.75, 0.5, 0.25)),
                   port("darkColor", "color3", floats(0.375, 0.1875, 0.0625)),
                   port("ringFrequency", "float", floats(6)),
                   port("roughness", "float", floats(0.625))],
        "outputs": [("surface", "surface", ("shader", "surface")),
                    ("baseColor", "color3", ("tint", "result")),
                    ("roughness", "float", (GRAPH_INPUT, "roughness"))],
        "nodes": [
            node("position", "class:Position", (40, 60)),
            node("normal", "class:Normal", (40, 260)),
            node("pattern", "graph:GrainPattern", (240, 60), position=("position", "position"),
                 ringFrequency=(GRAPH_INPUT, "ringFrequency")),
            node("tint", "class:MixColor", (440, 60), a=(GRAPH_INPUT, "darkColor"),
                 b=(GRAPH_INPUT, "lightColor"), factor=("pattern", "grain")),
            node("shader", "class:PrincipledSurface", (640, 60), baseColor=("tint", "result"),
                 roughness=(GRAPH_INPUT, "roughness"), normal=("normal", "normal"),
                 metallic=floats(0)),
        ],
    },
    {
        "name": "GrainPattern",
        "inputs": [port("position", "vector3"),
                   port("ringFrequency", "float", floats(6)),
                   port("fineness", "float", floats(4))],
        "outputs": [("grain", "float", ("sharpen", "result")),
                    ("rings", "float", ("coarse", "rings"))],
        "nodes": [
            node("stretch", "class:ScaleVector3", (40, 60), vector=(GRAPH_INPUT, "position"),
                 scale=floats(1, 1, 0.25)),
            node("coarse", "graph:RingNoise", (240, 60), position=("stretch", "result"),
                 frequency=(GRAPH_INPUT, "ringFrequency"), distortion=floats(0.25)),
            node("fineFrequency", "class:Multiply", (40, 260), a=(GRAPH_INPUT, "ringFrequency"),
                 b=(GRAPH_INPUT, "fineness")),
            node("fine", "graph:RingNoise", (240, 260), position=("stretch", "result"),
                 frequency=("fineFrequency", "result"), distortion=floats(0.5)),
            node("fineWeight", "class:Multiply", (440, 260), a=("fine", "rings"),
                 b=floats(0.25)),
            node("blend", "class:Add", (640, 160), a=("coarse", "rings"),
                 b=("fineWeight", "result")),
            node("sharpen", "class:SmoothStep", (840, 160), value=("blend", "result"),
                 edge0=floats(0.25), edge1=floats(0.75)),
        ],
    },
    {
        "name": "RingNoise",
        "inputs": [port("position", "vector3"),
                   port("frequency", "float", floats(8)),
                   port("distortion", "float", floats(0.25))],
        "outputs": [("rings", "float", ("rings", "result"))],
        "nodes": [
            node("split", "class:SplitVector3", (40, 60), vector=(GRAPH_INPUT, "position")),
            node("radial", "class:CombineVector3", (240, 60), x=("split", "x"), z=("split", "z")),
            node("radius", "class:Length", (440, 60), vector=("radial", "vector")),
            node("noise", "class:Noise", (40, 260), position=(GRAPH_INPUT, "position"),
                 scale=floats(4), octaves=ints(2)),
            node("wobble", "class:Multiply", (240, 260), a=("noise", "value"),
                 b=(GRAPH_INPUT, "distortion")),
            node("distorted", "class:Add", (640, 160), a=("radius", "result"),
                 b=("wobble", "result")),
            node("scaled", "class:Multiply", (840, 160), a=("distorted", "result"),
                 b=(GRAPH_INPUT, "frequency")),
            node("rings", "class:Fract", (1040, 160), value=("scaled", "result")),
        ],
    },
    {
        "name": "Plastic",
        "inputs": [port("albedoMap", "texture", identifier("image:plastic-albedo")),
                   port("normalMap", "texture", identifier("image:plastic-normal")),
                   port("ior", "float", floats(1.5)),
                   port("roughness", "float", floats(0.25))],
        "outputs": [("surface", "surface", ("shader", "surface")),
                    ("reflectance", "float", ("fresnel", "factor"))],
        "nodes": [
            node("uv", "class:TexCoord", (40, 160)),
            node("albedo", "class:ImageTexture", (240, 60), image=(GRAPH_INPUT, "albedoMap"),
                 uv=("uv", "uv")),
            node("bumps", "class:ImageTexture", (240, 260), image=(GRAPH_INPUT, "normalMap"),
                 uv=("uv", "uv"), tiles=ints(2, 2), srgb=flag(False),
                 usage=semantic("normal")),
            node("normalMap", "class:NormalMap", (440, 260), color=("bumps", "color"),
                 strength=floats(0.5)),
            node("fresnel", "class:Fresnel", (640, 360), normal=("normalMap", "normal"),
                 ior=(GRAPH_INPUT, "ior")),
            node("shader", "class:PrincipledSurface", (640, 60), baseColor=("albedo", "color"),
                 opacity=("albedo", "alpha"), normal=("normalMap", "normal"),
                 roughness=(GRAPH_INPUT, "roughness"), ior=(GRAPH_INPUT, "ior")),
        ],
    },
]


def graph_item(graph):
    name = graph["name"]

    def source(pair):
        node_name, output = pair
        return ["" if node_name == GRAPH_INPUT else uid("node:%s/%s" % (name, node_name)),
                output]

    nodes = []
    for node_name, class_key, (x, y), inputs in graph["nodes"]:
        item = {"uuid": uid("node:%s/%s" % (name, node_name)), "desc": node_name,
                "node": uid(class_key), "editorpos": [x, y]}
        entries = []
        for input_name, setting in inputs.items():
            if isinstance(setting, tuple):
                entries.append({"name": input_name, "from": source(setting)})
            else:
                entries.append({"name": input_name, "default": setting})
        if entries:
            item["input"] = entries
        nodes.append(item)
    outputs = []
    for output_name, type_name, pair in graph["outputs"]:
        outputs.append({"name": output_name, "type": uid("type:" + type_name),
                        "from": source(pair)})
    return {"content": "graph", "uuid": uid("graph:" + name), "desc": name,
            "input": [entry(*p) for p in graph["inputs"]], "output": outputs, "nodes": nodes}


def materials_library():
    return [header(), [graph_item(graph) for graph in GRAPHS]]


def main():
    tool = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else \
        ROOT / "build/default/tools/canonicalize/matgraph_canonicalize"
    base = ROOT / "examples/base.matlib"
    materials = ROOT / "examples/materials.matlib"
    base.write_text(json.dumps(base_library(), indent=1))
    materials.write_text(json.dumps(materials_library(), indent=1))
    subprocess.run([str(tool), str(base)], check=True)
    subprocess.run([str(tool), "--parent", str(base), str(materials)], check=True)


if __name__ == "__main__":
    main()
