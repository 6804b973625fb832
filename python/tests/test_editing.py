"""Editing graphs with GraphFactory: building, copying, and every way an operation fails."""

import pytest

import matgraph


def build_offset(library, base):
    """A graph out = in + offset, with offset defaulting to 0.25."""
    float_type = base.types["float"]
    with matgraph.GraphFactory(library, "Offset") as factory:
        factory.add_input(float_type, "in")
        factory.add_input(float_type, "offset", 0.25)
        factory.add_output(float_type, "out")
        add = factory.add_node(base.node_classes["Add"], "add")
        factory.connect(factory.input_node, "in", add, "a")
        factory.connect(factory.input_node, "offset", add, "b")
        factory.connect(add, "result", factory.output_node, "out")
        factory.set_editor_position(add, 120, 40)
        return factory.finish()


def test_a_finished_graph_is_registered_and_reads_back(base):
    library = matgraph.Library(base, "mine")
    graph = build_offset(library, base)
    assert library.graphs["Offset"] == graph == library.graphs[0]
    assert [p.name for p in graph.inputs] == ["in", "offset"]
    assert graph.inputs["offset"].default == [0.25]
    assert graph.inputs["in"].default is None
    add = graph.nodes["add"]
    assert add.inputs == (("a", 0, 0, None), ("b", 0, 1, None))
    assert add.editor_position == (120.0, 40.0)
    assert graph.output_node.input("out")[1:3] == (add.index, 0)


def test_leaving_the_block_without_finishing_discards_the_graph(base):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library, "Draft") as factory:
        node = factory.add_node(base.node_classes["Add"])
    assert factory.closed and factory.graph is None
    assert len(library.graphs) == 0
    with pytest.raises(matgraph.Error, match="The graph factory is closed"):
        node.name
    with pytest.raises(matgraph.Error, match="The graph factory is closed"):
        factory.add_node(base.node_classes["Add"])


def test_a_finished_factory_does_nothing_more(base):
    library = matgraph.Library(base)
    factory = matgraph.GraphFactory(library, "Done", matgraph.UUID("11111111-2222-4333-8444-555555555555"))
    node = factory.add_node(base.node_classes["Add"])
    graph = factory.finish()
    assert factory.graph == graph and graph.uuid == matgraph.UUID("11111111-2222-4333-8444-555555555555")
    for operation in (factory.finish, lambda: node.index, lambda: len(factory)):
        with pytest.raises(matgraph.Error, match="The graph factory has finished its graph"):
            operation()


def test_values_take_the_kind_of_the_types_default_unless_told(base):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library, "Values") as factory:
        factory.add_input(base.types["float"], "whole", 2)  # an int for a float type
        factory.add_input(base.types["int"], "count", [3])
        factory.add_input(base.types["bool"], "flag", True)
        factory.add_input(base.types["string"], "label", "grain")
        factory.add_input(base.types["texture"], "image", matgraph.UUID("ce8230b4-21b6-4676-8cd8-1ed3afbad4f4"))
        factory.add_input(base.types["usage"], "usage", [base.semantics["color"], None])
        factory.add_input(base.types["float"], "empty", [], kind="float")
        noise = factory.add_node(base.node_classes["Noise"], "noise")
        factory.set_input_default(noise, "octaves", 6)
        factory.set_input_default(noise, 4, "cells")
        factory.set_input_default(noise, "scale", [0.1])
        factory.set_input_default(noise, "scale", None)  # removed again
        graph = factory.finish()
    defaults = {p.name: p.default for p in graph.inputs}
    assert defaults == {
        "whole": [2.0], "count": [3], "flag": [True], "label": ["grain"],
        "image": [matgraph.UUID("ce8230b4-21b6-4676-8cd8-1ed3afbad4f4")],
        "usage": [base.semantics["color"], None], "empty": [],
    }
    assert [default for *_, default in graph.nodes["noise"].inputs] == [
        None, None, [6], None, ["cells"]]


@pytest.mark.parametrize(
    "value, kind, error, message",
    [
        ([], None, TypeError, "The kind of an empty value is not known; give kind= (\"float\", ...)"),
        (["a", 1], None, TypeError, "The elements of a value are all bool, all int or float, all "
                                    "str, all UUID or all Semantic"),
        ([1.5], "int", TypeError, "Element 0 of a value of kind int cannot be float"),
        ([True], "float", TypeError, "Element 0 of a value of kind float cannot be bool"),
        ([2**31], "int", ValueError, "Element 0 is beyond the range of a 32-bit int"),
        (["x"], "uuid", ValueError, "Invalid UUID text: 'x'"),
        ([1], "colour", ValueError, "Unknown value kind \"colour\" (bool, int, float, uuid, "
                                    "string or semantic)"),
    ],
)
def test_a_value_that_does_not_fit_raises_and_changes_nothing(base, value, kind, error, message):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library) as factory:
        with pytest.raises(error) as raised:
            factory.add_input(base.types["surface"], "x", value, kind=kind)
        assert str(raised.value) == message
        factory.add_input(base.types["surface"], "x")  # the name is still free
        assert factory.input_node.output_names == ("x",)


def test_every_failing_operation_raises_its_connection_error(base):
    library = matgraph.Library(base)
    float_type, color3 = base.types["float"], base.types["color3"]
    with matgraph.GraphFactory(library, "Failing") as factory:
        factory.add_input(float_type, "in")
        factory.add_output(color3, "out")
        add = factory.add_node(base.node_classes["Add"], "add")
        cases = [
            (lambda: factory.add_input(float_type, "in"), matgraph.ConnectionNameInUseError,
             "add_input('in'): ConnectionNameInUse"),
            (lambda: factory.add_output(float_type, "out"), matgraph.ConnectionNameInUseError,
             "add_output('out'): ConnectionNameInUse"),
            (lambda: factory.remove_input("nope"), matgraph.ConnectionNotFoundError,
             "remove_input('nope'): ConnectionNotFound"),
            (lambda: factory.remove_output("nope"), matgraph.ConnectionNotFoundError,
             "remove_output('nope'): ConnectionNotFound"),
            (lambda: factory.remove_node(0), matgraph.ConnectionNotFoundError,
             "remove_node(node 0 'GraphInputs'): ConnectionNotFound"),
            (lambda: factory.remove_node(7), matgraph.ConnectionNotFoundError,
             "Node index 7 out of range (count 3): ConnectionNotFound"),
            (lambda: factory.node(-4), matgraph.ConnectionNotFoundError,
             "Node index -4 out of range (count 3): ConnectionNotFound"),
            (lambda: factory.connect(factory.input_node, "nope", add, "a"),
             matgraph.ConnectionNotFoundError,
             "connect(node 0 'GraphInputs' output 'nope', node 2 'add' input 'a'): "
             "ConnectionNotFound"),
            (lambda: factory.connect(add, "result", factory.output_node, "out"),
             matgraph.ConnectionTypeMismatchError,
             "connect(node 2 'add' output 'result', node 1 'GraphOutputs' input 'out'): "
             "ConnectionTypeMismatch"),
            (lambda: factory.connect(add, "result", add, "a"), matgraph.ConnectionInvalidNodesError,
             "connect(node 2 'add' output 'result', node 2 'add' input 'a'): "
             "ConnectionInvalidNodes"),
            (lambda: factory.replace_node(add, base.node_classes["Noise"], "noise"),
             matgraph.ConnectionTypeMismatchError,
             "replace_node(node 2 'add'): ConnectionTypeMismatch"),
        ]
        for operation, error, message in cases:
            with pytest.raises(error) as raised:
                operation()
            assert str(raised.value) == message
            assert raised.value.code == error.code
            assert isinstance(raised.value, matgraph.ConnectionError)
        assert len(factory) == 3
        assert add.inputs == (("a", None, None, None), ("b", None, None, None))


def test_nodes_follow_their_node_as_others_come_and_go(base):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library) as factory:
        first = factory.add_node(base.node_classes["Add"], "first")
        second = factory.add_node(base.node_classes["Multiply"], "second")
        third = factory.add_node(base.node_classes["Subtract"], "third")
        factory.connect(second, "result", third, "a")
        factory.remove_node(first)
        assert (second.index, third.index) == (2, 3)
        assert third.inputs[0][1:3] == (2, 0)
        with pytest.raises(matgraph.ConnectionInvalidNodesError, match="no longer in the factory"):
            first.index
        # Same signature: the new node takes the place, connections and index of the old.
        divided = factory.replace_node(second, base.node_classes["Add"], "sum")
        assert (divided.index, divided.name) == (2, "sum")
        assert third.inputs[0][1:3] == (2, 0)
        # Another signature: appended last; what still fits is connected again.
        fract = factory.replace_node(
            divided, base.node_classes["Fract"], "fract", allow_signature_change=True)
        assert (fract.index, third.index) == (3, 2)
        assert third.inputs[0][1:3] == (3, 0)
        assert [node.name for node in factory.nodes] == ["GraphInputs", "GraphOutputs", "third", "fract"]
        assert factory.node(-1) == fract and factory.node(fract) == fract
        assert fract.node_class == base.node_classes["Fract"] and factory.input_node.node_class is None


def test_a_node_of_another_factory_is_refused(base):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library) as one, matgraph.GraphFactory(library) as other:
        node = one.add_node(base.node_classes["Add"])
        target = other.add_node(base.node_classes["Add"])
        with pytest.raises(matgraph.ConnectionInvalidNodesError, match="belongs to another GraphFactory"):
            other.connect(node, "result", target, "a")
        with pytest.raises(TypeError):
            other.connect("add", "result", target, "a")


def test_a_copy_keeps_connections_and_leaves_the_source_alone(base, materials):
    wood = materials.graphs["Wood"]
    scratch = matgraph.Library(base, "scratch")
    with matgraph.GraphFactory.clone(wood, scratch) as factory:
        assert [node.name for node in factory.nodes] == [node.name for node in wood.nodes]
        factory.set_name("Walnut")
        factory.remove_input("lightColor")
        factory.set_input_default(factory.nodes[6], "metallic", 0.5)
        walnut = factory.finish()
    assert scratch.graphs["Walnut"] == walnut and walnut.uuid != wood.uuid
    assert walnut.library is materials  # a copy stays a graph of the source's library
    assert [p.name for p in walnut.inputs] == ["darkColor", "ringFrequency", "roughness"]
    # The connections from later graph inputs moved down by one.
    assert walnut.nodes["tint"].inputs[0][1:3] == (0, 0)
    assert walnut.nodes["tint"].inputs[1][1] is None
    assert walnut.nodes["shader"].input("metallic")[3] == [0.5]
    assert len(wood.inputs) == 4 and wood.nodes["shader"].input("metallic")[3] == [0.0]
    with pytest.raises(TypeError, match="graph must be a Graph"):
        matgraph.GraphFactory.clone(base.node_classes["Add"], scratch)


def test_factory_arguments_of_the_wrong_type_raise_type_error(base):
    library = matgraph.Library(base)
    with pytest.raises(TypeError, match="library must be a Library"):
        matgraph.GraphFactory(base.types["float"])
    with matgraph.GraphFactory(library) as factory:
        with pytest.raises(TypeError, match="node_class must be a NodeClass or a Graph"):
            factory.add_node(base.types["float"])
        with pytest.raises(TypeError, match="type must be a Type"):
            factory.add_output(base.node_classes["Add"], "out")
