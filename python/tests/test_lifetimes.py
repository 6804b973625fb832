"""Lifetimes: an inner object keeps alive everything it points into, and no more.

Each case makes an object, drops every other reference (the libraries, graphs and
factories it was reached through), collects garbage, churns memory so that anything freed
would be reused, and then uses the object. Under AddressSanitizer any use of freed memory
fails the test; weak references show that the libraries really go once the object does.
"""

import gc
import weakref

import pytest

import matgraph
from conftest import ADD_CLASS, BASE_PATH, COLOR_SEMANTIC, MATERIALS_PATH, WOOD_GRAPH

# Libraries made by the cases; weak references only.
made = []


def load(path, parent=None):
    library = matgraph.load(path, parent=parent)
    made.append(weakref.ref(library))
    return library


def base():
    return load(BASE_PATH)


def materials():
    return load(MATERIALS_PATH, parent=base())


def churn():
    gc.collect()
    for _ in range(3):
        matgraph.load(BASE_PATH).dumps()


def cloned_graph():
    source = materials()
    scratch = matgraph.Library(base(), "scratch")
    made.append(weakref.ref(scratch))
    with matgraph.GraphFactory.clone(source.graphs["Wood"], scratch) as factory:
        factory.set_name("Walnut")
        return factory.finish()


def node_of_open_factory():
    library = base()
    factory = matgraph.GraphFactory(matgraph.Library(library))
    return factory.add_node(library.node_classes["Noise"], "noise")


CASES = [
    ("type", lambda: base().types["color3"], lambda t: (t.name, t.default),
     ("color3", [0.5, 0.5, 0.5])),
    ("semantic of the parent, reached through a child",
     lambda: materials().find_semantic(COLOR_SEMANTIC), lambda s: s.type.name, "color3"),
    ("node class of the parent", lambda: materials().find_node_class(ADD_CLASS),
     lambda c: (c.inputs[0].type.name, c.library.name), ("float", "")),
    ("graph", lambda: materials().graphs[WOOD_GRAPH],
     lambda g: [n.node_class.inputs[0].type.name for n in g.nodes if n.node_class.inputs],
     ["color3", "surface", "vector3", "color3", "color3"]),
    ("node", lambda: materials().graphs["Wood"].nodes["pattern"],
     lambda n: (n.node_class.nodes["coarse"].node_class.name, n.graph.name, n.inputs[0][0]),
     ("RingNoise", "Wood", "position")),
    ("class of a special node", lambda: materials().graphs["Wood"].input_node.node_class,
     lambda c: [p.type.name for p in c.outputs], ["color3", "color3", "float", "float"]),
    ("parameter", lambda: materials().graphs["Wood"].inputs["roughness"],
     lambda p: (p.type.default, p.default), ([0.0], [0.625])),
    ("semantic inside a default value",
     lambda: base().node_classes["ImageTexture"].inputs["usage"].default,
     lambda value: value[0].type.name, "color3"),
    ("sequence of a library", lambda: materials().graphs, lambda g: [x.name for x in g][:1],
     ["Wood"]),
    ("iterator over a sequence of a library", lambda: iter(materials().graphs),
     lambda graphs: next(graphs).name, "Wood"),
    ("nodes of a graph", lambda: materials().graphs["Wood"].nodes,
     lambda nodes: [n.kind for n in nodes][-1], matgraph.NodeKind.ClassNode),
    ("parameters of a class", lambda: base().node_classes["Noise"].inputs,
     lambda inputs: [p.type.name for p in inputs][-1], "string"),
    ("resolver", lambda: matgraph.Resolver(materials().graphs["Wood"]),
     lambda r: (r.resolve_input(5, "factor").source, r.node((1, 3)).node_class.name),
     ((1, 8), "RingNoise")),
    ("upstream walk", lambda: matgraph.Resolver(materials().graphs["Wood"]).upstream(1),
     lambda walk: len(list(walk)) > 20, True),
    ("child library", lambda: materials(), lambda m: m.parent.types[0].name, "float"),
    ("copied graph in another library", cloned_graph,
     lambda g: (g.library.name, g.nodes["shader"].node_class.inputs[0].type.name,
                g.nodes["pattern"].node_class.name),
     ("", "color3", "GrainPattern")),
    ("node of an unfinished graph", node_of_open_factory,
     lambda n: (n.node_class.inputs["basis"].default, n.inputs[4][0]), (["perlin"], "basis")),
]


@pytest.mark.parametrize("make, use, expected", [c[1:] for c in CASES], ids=[c[0] for c in CASES])
def test_an_inner_object_keeps_its_libraries_alive(make, use, expected):
    made.clear()
    inner = make()
    churn()
    assert made and all(reference() is not None for reference in made)
    assert use(inner) == expected
    del inner
    churn()
    assert all(reference() is None for reference in made), "a library outlived its last user"


def test_a_library_built_from_a_childs_graph_keeps_the_child():
    parent = base()
    child = load(MATERIALS_PATH, parent=parent)
    with matgraph.GraphFactory(parent, "UsesWood") as factory:
        factory.add_node(child.graphs["Wood"], "wood")
        graph = factory.finish()
    del child, factory
    churn()
    assert graph.nodes["wood"].node_class.nodes["shader"].node_class.name == "PrincipledSurface"


def test_a_closed_factory_keeps_no_graph_but_its_nodes_fail_cleanly():
    node = node_of_open_factory()
    factory_library = node.node_class.library
    with matgraph.GraphFactory(factory_library) as factory:
        stale = factory.add_node(factory_library.node_classes["Add"])
    churn()
    with pytest.raises(matgraph.Error, match="The graph factory is closed"):
        stale.inputs
    assert node.inputs[0][0] == "position"
