"""Resolving inputs upstream through nested graphs, flattened or one level at a time."""

import pytest

import matgraph


@pytest.fixture
def wood(materials):
    return materials.graphs["Wood"]


def test_keys_and_flat_indices_of_the_root_graph(wood):
    resolver = matgraph.Resolver(wood)
    assert resolver.graph == wood and resolver.flatten
    for index in range(len(wood.nodes)):
        key = resolver.key(index)
        assert key == matgraph.NodeKey((0, index)) == (0, index)
        assert resolver.flat_index(key) == index and resolver.is_in_root_graph(key)
        assert resolver.node(key) == wood.nodes[index]
        assert resolver.node_kind(key) == wood.nodes[index].kind
        assert resolver.node_class(index) == wood.nodes[index].node_class


def test_nested_instances_are_numbered_as_they_are_reached(materials, wood):
    resolver = matgraph.Resolver(wood)
    key = resolver.key_from_path(matgraph.PortPath([4, 3]))
    assert key == (1, 3) and not resolver.is_in_root_graph(key)
    assert resolver.flat_index(key) == len(wood.nodes) + 3
    assert resolver.key_from_path([4, 3]) == key  # entered once
    assert resolver.key_from_path([]) == (0, 0)
    nested = resolver.node(key)
    assert (nested.name, nested.graph) == ("coarse", None)
    assert resolver.node_class(key) == materials.graphs["RingNoise"]


def test_resolving_follows_connections_through_graph_boundaries(materials, wood):
    resolver = matgraph.Resolver(wood)
    # A graph output fed by an ordinary node.
    assert resolver.resolve_output("baseColor") == ((0, 5), 0, None)
    # A root graph input is a source of its own.
    assert resolver.resolve_output(2) == ((0, 0), 3, None)
    # tint.factor comes from the nested GrainPattern's "sharpen" node (instance 1, node 8).
    source, output, default = resolver.resolve_input(5, "factor")
    assert (source, output, default) == ((1, 8), 0, None)
    assert resolver.node(source).name == "sharpen"
    # An unconnected input gives the default that applies: the node's own, else the class's.
    assert resolver.resolve_input(6, "metallic") == (None, None, [0.0])
    assert resolver.resolve_input(6, "ior") == (None, None, [1.5])


def test_a_one_level_resolver_stops_at_nested_graph_nodes(wood):
    resolver = matgraph.Resolver(wood, flatten=False)
    assert resolver.resolve_input(5, "factor") == ((0, 4), 0, None)
    assert resolver.node_kind((0, 4)) == matgraph.NodeKind.NestedGraphNode
    with pytest.raises(RuntimeError) as raised:
        resolver.key_from_path([4])
    assert str(raised.value) == "GetKeyFromPath not implemented for non-flattened graphs!"


def test_upstream_visits_each_source_once(wood):
    resolver = matgraph.Resolver(wood)
    steps = list(resolver.upstream(resolver.key(1), "baseColor"))
    assert steps[0] == ((0, 1), 1, ((0, 5), 0, None))
    inputs = [(key, input) for key, input, _ in steps]
    assert len(inputs) == len(set(inputs))  # each input of each node reached, once
    names = {resolver.node(key).name for key, _ in inputs}
    # Nested-graph nodes are stepped through, never sources; the nodes inside them are.
    assert {"GraphOutputs", "tint", "sharpen", "blend", "noise"} <= names
    assert not {"pattern", "coarse", "fine"} & names
    assert "GraphInputs" not in names  # graph inputs end a chain
    assert "shader" not in names  # not upstream of baseColor
    whole = list(resolver.upstream(1))
    assert {resolver.node(key).name for key, _, _ in whole} >= names | {"shader"}


@pytest.mark.parametrize(
    "call, error, message",
    [
        (lambda r: r.key_from_path([6, 0]), RuntimeError, "Can't drill into non-graph node!"),
        (lambda r: r.resolve_input((0, 99), 0), matgraph.InvalidDataAccessError,
         "Index out of Range: Node key {0, 99} out of range"),
        (lambda r: r.resolve_input((7, 0), 0), matgraph.InvalidDataAccessError,
         "Index out of Range: Node key {7, 0} out of range"),
        (lambda r: r.resolve_input(6, "Metallic"), KeyError,
         "\"No input 'Metallic' in PrincipledSurface\""),
        (lambda r: r.resolve_input(6, 7), IndexError, "Input index 7 out of range (count 7)"),
        (lambda r: r.node("shader"), TypeError,
         "A node key is a NodeKey, a pair (instance, node) or a node index"),
        (lambda r: r.node(-1), OverflowError, None),
    ],
)
def test_resolver_errors(wood, call, error, message):
    with pytest.raises(error) as raised:
        call(matgraph.Resolver(wood))
    if message is not None:
        assert str(raised.value) == message


def test_resolver_refuses_what_is_not_a_graph(base):
    with pytest.raises(TypeError, match="graph must be a Graph"):
        matgraph.Resolver(base.node_classes["Add"])
