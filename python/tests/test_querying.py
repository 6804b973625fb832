"""Querying libraries: the sequences, lookups, objects, values and identifiers."""

import pickle
import re

import pytest

import matgraph
from conftest import ADD_CLASS, COLOR3_TYPE, COLOR_SEMANTIC, FLOAT_TYPE, WOOD_GRAPH


@pytest.mark.parametrize("kind", ["types", "semantics", "node_classes"])
def test_each_sequence_answers_index_uuid_name_and_iteration_alike(base, kind):
    items = getattr(base, kind)
    every = list(items)
    assert len(every) == len(items) > 2
    assert items[-1] == every[-1] and items[1:3] == every[1:3]
    for position, item in enumerate(every):
        assert items[position] == item
        assert items[item.uuid] == item and item.uuid in items
        assert items[item.name] == item and item.name in items
        assert item in items
    assert items.get("no such name") is None
    assert items.get(matgraph.UUID.generate(), "fallback") == "fallback"


@pytest.mark.parametrize(
    "key, error, message",
    [
        (99, IndexError, "Graph index 99 out of range (count 4)"),
        (-5, IndexError, "Graph index -5 out of range (count 4)"),
        ("Oak", KeyError, "'No Graph Oak in this library'"),
        (matgraph.UUID(), KeyError, "'No Graph 00000000-0000-0000-0000-000000000000 in this library'"),
        (1.5, TypeError, "GraphList indices are int, UUID (this library only) or str (a name)"),
    ],
)
def test_a_sequence_lookup_that_finds_nothing_raises(materials, key, error, message):
    with pytest.raises(error) as raised:
        materials.graphs[key]
    assert str(raised.value) == message


@pytest.mark.parametrize(
    "finder, uuid, name",
    [
        ("find_type", FLOAT_TYPE, "float"),
        ("find_semantic", COLOR_SEMANTIC, "color"),
        ("find_node_class", ADD_CLASS, "Add"),
        ("find_any_node_class", ADD_CLASS, "Add"),
    ],
)
def test_finders_climb_the_parent_chain_only_when_asked(materials, finder, uuid, name):
    find = getattr(materials, finder)
    assert find(uuid).name == name
    assert find(str(uuid), search_parents=True).name == name
    assert find(uuid, search_parents=False) is None
    assert find(matgraph.UUID.generate()) is None
    with pytest.raises(ValueError, match="Invalid UUID text: 'Add'"):
        find("Add")


def test_find_any_node_class_gives_graphs_as_graph_objects(materials):
    wood = materials.find_any_node_class(WOOD_GRAPH)
    assert isinstance(wood, matgraph.Graph) and wood.is_graph
    assert wood == materials.find_graph(WOOD_GRAPH) == materials.graphs["Wood"]
    assert materials.find_node_class(WOOD_GRAPH) is None


def test_types_and_semantics_carry_their_defaults_and_types(base):
    color3 = base.types[COLOR3_TYPE]
    assert (color3.name, color3.uuid, color3.default) == ("color3", COLOR3_TYPE, [0.5, 0.5, 0.5])
    assert base.semantics["color"].type == color3
    assert hash(base.semantics["color"].type) == hash(color3)


def test_node_classes_list_their_inputs_and_outputs(base):
    noise = base.node_classes["Noise"]
    assert [parameter.name for parameter in noise.inputs] == [
        "position", "scale", "octaves", "roughness", "basis"]
    assert [parameter.name for parameter in noise.outputs] == ["value"]
    octaves = noise.inputs["octaves"]
    assert (octaves.index, octaves.is_input, octaves.type.name) == (2, True, "int")
    assert noise.inputs[-1] == noise.inputs["basis"]
    assert "scale" in noise.inputs and "Scale" not in noise.inputs
    assert (noise.find_input("roughness"), noise.find_input("value")) == (3, None)
    assert noise.find_output("value") == 0
    assert noise.library is base and not noise.is_graph
    with pytest.raises(KeyError):
        noise.inputs["Scale"]
    with pytest.raises(IndexError, match=r"Output index 1 out of range \(count 1\)"):
        noise.outputs[1]


@pytest.mark.parametrize(
    "class_name, input_name, default",
    [
        ("Noise", "octaves", [4]),
        ("Noise", "basis", ["perlin"]),
        ("ImageTexture", "srgb", [True]),
        ("ImageTexture", "tiles", [1, 1]),
        ("PrincipledSurface", "ior", [1.5]),
        ("ScaleColor", "color", None),
    ],
)
def test_defaults_are_lists_of_python_values(base, class_name, input_name, default):
    assert base.node_classes[class_name].inputs[input_name].default == default


def test_semantic_and_uuid_elements_become_objects(base, materials):
    usage = base.node_classes["ImageTexture"].inputs["usage"].default
    assert usage == [base.semantics[COLOR_SEMANTIC]]
    albedo = materials.graphs["Plastic"].inputs["albedoMap"].default
    assert albedo == [matgraph.UUID("ce8230b4-21b6-4676-8cd8-1ed3afbad4f4")]
    color = usage[0]
    assert hash(color) == hash(base.semantics["color"]) and color != color.uuid
    assert repr(color) == f"<matgraph.Semantic 'color' {COLOR_SEMANTIC}>"
    assert color in base.semantics and materials.find_semantic(COLOR_SEMANTIC) == color


@pytest.mark.parametrize("kind", [matgraph.Node, matgraph.Semantic])
def test_objects_of_a_library_are_made_only_by_the_library(kind):
    with pytest.raises(TypeError, match="cannot create"):
        kind()


def test_a_graph_lists_its_nodes_with_kinds_classes_and_inputs(materials):
    wood = materials.graphs["Wood"]
    kinds = [node.kind for node in wood.nodes]
    assert kinds[:2] == [matgraph.NodeKind.GraphInputNode, matgraph.NodeKind.GraphOutputNode]
    assert wood.input_node.name == "GraphInputs" and wood.output_node.index == 1
    pattern = wood.nodes["pattern"]
    assert pattern.kind == matgraph.NodeKind.NestedGraphNode
    assert pattern.node_class == materials.graphs["GrainPattern"]
    assert pattern.graph == wood and pattern in wood.nodes
    assert wood.nodes[pattern.uuid] == pattern == wood.nodes[pattern.index]
    assert pattern.editor_position == (240.0, 60.0)
    assert pattern.inputs == (
        ("position", 2, 0, None),
        ("ringFrequency", 0, 2, None),
        ("fineness", None, None, None),
    )
    name, source, output, default = pattern.input("ringFrequency")
    assert (name, source, output, default) == ("ringFrequency", 0, 2, None)
    assert pattern.input(-1)[0] == "fineness"
    shader = wood.nodes["shader"]
    assert shader.input("metallic") == ("metallic", None, None, [0.0])
    assert wood.output_node.input("roughness") == ("roughness", 0, 3, None)


def test_a_node_input_lookup_that_finds_nothing_raises(materials):
    shader = materials.graphs["Wood"].nodes["shader"]
    with pytest.raises(KeyError):
        shader.input("Metallic")
    with pytest.raises(IndexError, match=r"Input index 7 out of range \(count 7\)"):
        shader.input(7)
    with pytest.raises(KeyError):
        materials.graphs["Wood"].nodes["no such node"]


def test_parameter_from_path_follows_nested_graphs(materials):
    wood = materials.graphs["Wood"]
    node, parameter = wood.parameter_from_path(matgraph.PortPath([], input="roughness"))
    assert node is None and parameter == wood.inputs["roughness"]
    node, parameter = wood.parameter_from_path(matgraph.PortPath([4, 3], input="frequency"))
    assert (node.name, node.index, parameter.name) == ("coarse", 3, "frequency")
    assert node.graph == materials.graphs["GrainPattern"]
    node, parameter = wood.parameter_from_path(matgraph.PortPath([6], output="surface"))
    assert (node.name, parameter.is_input, parameter.type.name) == ("shader", False, "surface")
    with pytest.raises(matgraph.InvalidDataAccessError):
        wood.parameter_from_path([6])  # a bare sequence names the output with the empty name


@pytest.mark.parametrize(
    "path, message",
    [
        (matgraph.PortPath([6, 0], input="x"), "Can only move on to nodes within a graph!"),
        (matgraph.PortPath([6], input="nope"), "Node does not have input of that name!"),
        (matgraph.PortPath([6], output="nope"), "Node does not have output of that name!"),
    ],
)
def test_parameter_from_path_raises_invalid_data_access(materials, path, message):
    with pytest.raises(matgraph.InvalidDataAccessError) as raised:
        materials.graphs["Wood"].parameter_from_path(path)
    assert str(raised.value) == "Index out of Range: " + message
    assert isinstance(raised.value, LookupError)


def test_port_paths_compare_and_refuse_two_ports():
    path = matgraph.PortPath([1, 2], input="in")
    assert (path.nodes, path.port_name, path.is_input, path.is_output) == ((1, 2), "in", True, False)
    assert path == matgraph.PortPath((1, 2), input="in") != matgraph.PortPath([1, 2], output="in")
    assert matgraph.PortPath().is_output
    assert hash(path) == hash(matgraph.PortPath([1, 2], input="in"))
    with pytest.raises(ValueError):
        matgraph.PortPath([1], input="a", output="b")


def test_annotations_are_the_hosts_notes(base):
    scale = base.node_classes["Noise"].inputs["scale"]
    assert scale.annotation == {}
    assert scale.annotate("unit", "metre") and not scale.annotate("unit", "foot")
    assert base.node_classes["Noise"].inputs["scale"].annotation == {"unit": "metre"}


def test_identical_signatures_compares_names_and_type_objects(base):
    add, subtract, noise = (base.node_classes[name] for name in ("Add", "Subtract", "Noise"))
    assert matgraph.identical_signatures(add, subtract)
    assert not matgraph.identical_signatures(add, noise)
    with pytest.raises(TypeError):
        matgraph.identical_signatures(add, "Subtract")


def test_uuids_parse_print_compare_hash_and_pickle():
    text = "6448c681-b973-4f28-bd17-0518157028ec"
    uuid = matgraph.UUID(text.upper())
    assert str(uuid) == text and repr(uuid) == f"matgraph.UUID('{text}')"
    assert uuid == matgraph.UUID(text) and hash(uuid) == hash(matgraph.UUID(text))
    assert uuid != text and {uuid: 1}[matgraph.UUID(uuid)] == 1
    assert matgraph.UUID() == matgraph.UUID("") and not matgraph.UUID() and uuid
    assert matgraph.UUID().is_nil
    assert sorted([uuid, matgraph.UUID()]) == [matgraph.UUID(), uuid]
    assert matgraph.UUID("ffffffff-0000-0000-0000-000000000000") > uuid
    assert matgraph.UUID.from_bytes(uuid.bytes) == uuid and len(uuid.bytes) == 16
    assert pickle.loads(pickle.dumps(uuid)) == uuid
    assert matgraph.UUID.generate() != matgraph.UUID.generate()
    for bad in ["6448c681", "zz48c681-b973-4f28-bd17-0518157028ec", "x\0"]:
        with pytest.raises(ValueError, match="Invalid UUID text"):
            matgraph.UUID(bad)
    with pytest.raises(ValueError, match="A UUID is 16 bytes, not 3"):
        matgraph.UUID.from_bytes(b"abc")
    assert matgraph.UUID(text=text) == uuid and matgraph.UUID(uuid=uuid) == uuid
    for arguments, keywords, message in [
        ((1,), {}, "UUID() takes a str or a UUID, not int"),
        ((text, text), {}, "UUID() takes at most one argument (2 given)"),
        ((), {"name": text}, "UUID() got an unexpected keyword argument 'name'"),
    ]:
        with pytest.raises(TypeError, match=re.escape(message)):
            matgraph.UUID(*arguments, **keywords)


def test_records_are_named_tuples():
    key = matgraph.NodeKey((1, 5))
    assert key == (1, 5) and (key.instance, key.node) == (1, 5)
    assert hash(key) == hash((1, 5)) and pickle.loads(pickle.dumps(key)) == key
    assert repr(key) == "matgraph.NodeKey(instance=1, node=5)"
